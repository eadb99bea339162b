#include "gui/widgets.h"

#include <QScrollArea>

namespace kinfolio::gui {

QLabel* paragraph(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* quiet(const QString& text, QWidget* parent) {
    QLabel* label = paragraph(text, parent);
    // Follows the theme, light or dark, instead of a fixed grey.
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* heading(const QString& text, double scale, QWidget* parent) {
    QLabel* label = paragraph(text, parent);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    return label;
}

QVBoxLayout* scrollingColumn(QBoxLayout* into, const QString& name, QWidget* parent) {
    auto* scroll = new QScrollArea(parent);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setAccessibleName(name);
    auto* inner = new QWidget(scroll);
    auto* column = new QVBoxLayout(inner);
    column->setContentsMargins(0, 0, 8, 0);  // room for the scroll bar
    scroll->setWidget(inner);
    into->addWidget(scroll, 1);
    return column;
}

QPushButton* button(const QString& text, const QString& help, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setToolTip(help);
    b->setAccessibleDescription(help);
    return b;
}

void showText(QLabel* label, const QString& text) {
    if (label->text() != text) label->setText(text);
    label->setVisible(!text.isEmpty());
}

}  // namespace kinfolio::gui
