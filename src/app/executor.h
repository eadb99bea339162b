#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>

// Where the application model's work runs: state changes on one main thread,
// long work (scan, preview, export) in the background, results posted back.
namespace kinfolio {

class Executor {
public:
    using Task = std::function<void()>;
    using TimerID = uint64_t;

    virtual ~Executor() = default;
    // Runs work off the main thread.
    virtual void background(Task work) = 0;
    // Runs work on the main thread, after what is already queued there.
    virtual void post(Task work) = 0;
    // Seconds on a monotonic clock.
    virtual double now() const = 0;
    // Runs work on the main thread once `seconds` have passed on that clock.
    virtual TimerID after(double seconds, Task work) = 0;
    // A timer not yet fired never fires; an unknown or fired one is ignored.
    virtual void cancel(TimerID timer) = 0;
};

// For tests: nothing happens until asked. Time moves only with advance();
// background and main tasks wait in queues and run on the calling thread.
class ManualExecutor : public Executor {
public:
    void background(Task work) override;
    void post(Task work) override;
    double now() const override { return now_; }
    TimerID after(double seconds, Task work) override;
    void cancel(TimerID timer) override;

    // Moves the clock on and fires the timers that fall due, in time order.
    void advance(double seconds);
    // Runs queued background and main tasks (and what they queue) until
    // both queues are empty; timers wait for advance().
    void drain();
    // drain() and advance() until no task or timer is left.
    void settle();
    // Runs the oldest background task alone; false when there is none.
    bool runNextBackground();
    // Runs the main tasks queued so far and those they queue.
    void runMainQueue();

    size_t pendingBackground() const { return background_.size(); }
    size_t pendingMain() const { return main_.size(); }
    size_t pendingTimers() const { return timers_.size(); }

private:
    double now_ = 0;
    TimerID nextTimer_ = 1;
    std::deque<Task> background_, main_;
    // (due time, id) keeps timers of equal due time in the order they were set.
    std::map<std::pair<double, TimerID>, Task> timers_;
};

}  // namespace kinfolio
