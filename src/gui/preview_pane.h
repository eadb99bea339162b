#pragma once

#include <QByteArray>
#include <QWidget>

#include "app/app_model.h"

class QBuffer;
class QLabel;
class QPdfDocument;
class QPdfView;
class QStackedLayout;

namespace kinfolio::gui {

// The middle of the window: the rendered preview, or why there is none.
class PreviewPane : public QWidget {
public:
    explicit PreviewPane(QWidget* parent = nullptr);
    void show(const AppModel& model);

    // The document shown (for tests).
    const QPdfDocument* document() const { return shown_; }
    // Whether the document on screen is made of these bytes.
    bool shows(const std::string& pdf) const;

private:
    void load(const std::string& pdf);

    QLabel* status_;
    QLabel* note_;
    QStackedLayout* stack_;
    QWidget* empty_;
    QLabel* emptyTitle_;
    QLabel* emptyText_;
    QPdfView* view_;
    QPdfDocument* shown_ = nullptr;
    QBuffer* shownBytes_ = nullptr;
    QByteArray bytes_;  // of the document shown or being loaded
};

}  // namespace kinfolio::gui
