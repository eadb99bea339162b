#include "gui/preview_pane.h"

#include <QBuffer>
#include <QLabel>
#include <QPdfDocument>
#include <QPdfView>
#include <QScrollBar>
#include <QStackedLayout>
#include <QVBoxLayout>

#include "gui/widgets.h"

namespace kinfolio::gui {

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* top = new QHBoxLayout;
    top->addWidget(heading("Preview", 1.15, this));
    status_ = quiet({}, this);
    status_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    top->addWidget(status_, 1);
    layout->addLayout(top);
    note_ = quiet({}, this);
    layout->addWidget(note_);

    stack_ = new QStackedLayout;
    empty_ = new QWidget(this);
    auto* emptyLayout = new QVBoxLayout(empty_);
    emptyLayout->addStretch();
    emptyTitle_ = heading({}, 1.3, empty_);
    emptyTitle_->setAlignment(Qt::AlignCenter);
    emptyText_ = quiet({}, empty_);
    emptyText_->setAlignment(Qt::AlignCenter);
    emptyLayout->addWidget(emptyTitle_);
    emptyLayout->addWidget(emptyText_);
    emptyLayout->addStretch();
    view_ = new QPdfView(this);
    view_->setPageMode(QPdfView::PageMode::MultiPage);
    view_->setZoomMode(QPdfView::ZoomMode::FitToWidth);
    view_->setPageSpacing(12);
    view_->setAccessibleName("Preview of the PDF");
    view_->setFocusPolicy(Qt::StrongFocus);  // the keyboard scrolls it
    stack_->addWidget(empty_);
    stack_->addWidget(view_);
    layout->addLayout(stack_, 1);
}

void PreviewPane::load(const std::string& pdf) {
    // Compared in place: the window asks on every change of the model.
    if (static_cast<size_t>(bytes_.size()) == pdf.size() &&
        std::equal(pdf.begin(), pdf.end(), bytes_.constData()))
        return;
    bytes_ = QByteArray(pdf.data(), static_cast<qsizetype>(pdf.size()));
    // The new document replaces the old one once loaded, keeping the place
    // the user scrolled to.
    auto* buffer = new QBuffer(this);
    buffer->setData(bytes_);
    buffer->open(QIODevice::ReadOnly);
    auto* document = new QPdfDocument(this);
    connect(document, &QPdfDocument::statusChanged, this,
            [this, document, buffer](QPdfDocument::Status status) {
                if (status != QPdfDocument::Status::Ready && status != QPdfDocument::Status::Error)
                    return;
                if (buffer->data() != bytes_ || status == QPdfDocument::Status::Error) {
                    // Superseded while loading, or unreadable: dropped.
                    document->deleteLater();
                    buffer->deleteLater();
                    return;
                }
                int place = view_->verticalScrollBar()->value();
                view_->setDocument(document);
                view_->verticalScrollBar()->setValue(place);
                if (shown_) shown_->deleteLater();
                if (shownBytes_) shownBytes_->deleteLater();
                shown_ = document;
                shownBytes_ = buffer;
            });
    document->load(buffer);
}

bool PreviewPane::shows(const std::string& pdf) const {
    if (!shownBytes_) return false;
    const QByteArray& bytes = shownBytes_->data();
    return static_cast<size_t>(bytes.size()) == pdf.size() &&
           std::equal(pdf.begin(), pdf.end(), bytes.constData());
}

void PreviewPane::show(const AppModel& model) {
    const AppState& s = model.state();
    QString status;
    if (s.selected.empty()) {
        showText(emptyTitle_, "Nothing selected");
        showText(emptyText_, "Tick a source on the left or widen the date range.");
        stack_->setCurrentWidget(empty_);
    } else if (!s.previewPDF) {
        showText(emptyTitle_, s.isRenderingPreview || s.phase == Phase::ready
                                  ? "Making the preview…"
                                  : QString());
        showText(emptyText_, {});
        stack_->setCurrentWidget(empty_);
    } else {
        load(*s.previewPDF);
        stack_->setCurrentWidget(view_);
        status = s.previewPageCount == 1 ? QString("1 page")
                                         : QString("%1 pages").arg(s.previewPageCount);
    }
    if (s.isRenderingPreview) status = status.isEmpty() ? "Updating…" : status + " · Updating…";
    showText(status_, status);
    showText(note_, qt(model.previewNote()));
}

}  // namespace kinfolio::gui
