#include "app/executor.h"

namespace kinfolio {

void ManualExecutor::background(Task work) {
    background_.push_back(std::move(work));
}

void ManualExecutor::post(Task work) {
    main_.push_back(std::move(work));
}

Executor::TimerID ManualExecutor::after(double seconds, Task work) {
    TimerID id = nextTimer_++;
    timers_.emplace(std::make_pair(now_ + seconds, id), std::move(work));
    return id;
}

void ManualExecutor::cancel(TimerID timer) {
    std::erase_if(timers_, [timer](const auto& entry) { return entry.first.second == timer; });
}

void ManualExecutor::advance(double seconds) {
    double target = now_ + seconds;
    while (!timers_.empty() && timers_.begin()->first.first <= target) {
        auto node = timers_.extract(timers_.begin());
        now_ = node.key().first;
        node.mapped()();
    }
    now_ = target;
}

void ManualExecutor::drain() {
    while (!background_.empty() || !main_.empty()) {
        runMainQueue();
        runNextBackground();
    }
}

bool ManualExecutor::runNextBackground() {
    if (background_.empty()) return false;
    Task task = std::move(background_.front());
    background_.pop_front();
    task();
    return true;
}

void ManualExecutor::runMainQueue() {
    while (!main_.empty()) {
        Task task = std::move(main_.front());
        main_.pop_front();
        task();
    }
}

void ManualExecutor::settle() {
    drain();
    while (!timers_.empty()) {
        advance(timers_.begin()->first.first - now_);
        drain();
    }
}

}  // namespace kinfolio
