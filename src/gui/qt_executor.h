#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>
#include <atomic>
#include <map>

#include "app/executor.h"

class QTimer;

namespace kinfolio::gui {

// The application model's executor in a Qt program: background work on a
// thread pool, results and timers on the thread that made this object (the
// GUI thread).
class QtExecutor : public QObject, public Executor {
public:
    explicit QtExecutor(QObject* parent = nullptr);
    // shutdown(), so no task outlives what it refers to.
    ~QtExecutor() override;

    void background(Task work) override;
    void post(Task work) override;
    double now() const override;
    TimerID after(double seconds, Task work) override;
    void cancel(TimerID timer) override;

    // Runs nothing more on the GUI thread (posted tasks and timers are
    // dropped) and waits for the background work under way. Called before
    // the model that posts the tasks goes away.
    void shutdown();

private:
    QThreadPool pool_;
    QElapsedTimer clock_;
    std::atomic<bool> closing_{false};
    TimerID nextTimer_ = 1;
    std::map<TimerID, QTimer*> timers_;
};

}  // namespace kinfolio::gui
