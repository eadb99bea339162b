#pragma once

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <string>

// Small pieces every screen of the window uses.
namespace kinfolio::gui {

inline QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

inline std::string utf8(const QString& text) {
    return text.toStdString();
}

// A paragraph that wraps and whose text can be selected and copied, as a
// sentence a user may want to paste into a search or a message.
QLabel* paragraph(const QString& text, QWidget* parent = nullptr);
// A paragraph in the palette's quieter text colour, for details and notes.
QLabel* quiet(const QString& text, QWidget* parent = nullptr);
// A heading: the same font, larger and bold, scaled from the user's font.
QLabel* heading(const QString& text, double scale, QWidget* parent = nullptr);

// A column that scrolls when taller than the window, named for screen
// readers, added to `into`; returns the layout of its contents.
QVBoxLayout* scrollingColumn(QBoxLayout* into, const QString& name, QWidget* parent);

// The help of the commands offered in several places.
inline const QString kChooseHelp =
    "Choose the folder with your chat exports, photos and documents.";
inline const QString kRescanHelp = "Read the folder again to pick up files you added";
inline const QString kCloseHelp = "Close this folder and go back to the start screen";

// A push button whose help shows as its tooltip and is read after its name
// by a screen reader.
QPushButton* button(const QString& text, const QString& help, QWidget* parent);

// Sets the label's text only when it differs, and hides it when empty.
void showText(QLabel* label, const QString& text);

}  // namespace kinfolio::gui
