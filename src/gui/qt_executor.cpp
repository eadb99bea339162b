#include "gui/qt_executor.h"

#include <QMetaObject>
#include <QTimer>

namespace kinfolio::gui {

QtExecutor::QtExecutor(QObject* parent) : QObject(parent) {
    clock_.start();
    // A scan, a preview and an export may run together; the scanner and the
    // renderer use the cores themselves.
    pool_.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
}

QtExecutor::~QtExecutor() {
    shutdown();
}

void QtExecutor::background(Task work) {
    if (closing_) return;
    pool_.start(std::move(work));
}

void QtExecutor::post(Task work) {
    if (closing_) return;
    // Queued to this object, so it runs on the GUI thread; checked again
    // there, since shutdown may come between the post and the run.
    QMetaObject::invokeMethod(
        this,
        [this, work = std::move(work)] {
            if (!closing_) work();
        },
        Qt::QueuedConnection);
}

double QtExecutor::now() const {
    return static_cast<double>(clock_.nsecsElapsed()) / 1e9;
}

Executor::TimerID QtExecutor::after(double seconds, Task work) {
    TimerID id = nextTimer_++;
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this, id, work = std::move(work)] {
        auto found = timers_.find(id);
        if (found == timers_.end()) return;
        found->second->deleteLater();
        timers_.erase(found);
        if (!closing_) work();
    });
    timers_.emplace(id, timer);
    timer->start(static_cast<int>(seconds * 1000 + 0.5));
    return id;
}

void QtExecutor::cancel(TimerID timer) {
    auto found = timers_.find(timer);
    if (found == timers_.end()) return;
    found->second->stop();
    found->second->deleteLater();
    timers_.erase(found);
}

void QtExecutor::shutdown() {
    closing_ = true;
    for (auto& [id, timer] : timers_)
        timer->stop();
    timers_.clear();
    pool_.waitForDone();
}

}  // namespace kinfolio::gui
