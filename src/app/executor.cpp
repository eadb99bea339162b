#include "app/executor.h"

#include <chrono>

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

ThreadExecutor::~ThreadExecutor() {
    for (auto& thread : threads_)
        thread.join();
}

void ThreadExecutor::background(Task work) {
    std::lock_guard lock(mutex_);
    threads_.emplace_back(std::move(work));
}

void ThreadExecutor::post(Task work) {
    {
        std::lock_guard lock(mutex_);
        main_.push_back(std::move(work));
    }
    wake_.notify_one();
}

double ThreadExecutor::now() const {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

Executor::TimerID ThreadExecutor::after(double seconds, Task work) {
    TimerID id;
    {
        std::lock_guard lock(mutex_);
        id = nextTimer_++;
        timers_.emplace(std::make_pair(now() + seconds, id), std::move(work));
    }
    wake_.notify_one();
    return id;
}

void ThreadExecutor::cancel(TimerID timer) {
    std::lock_guard lock(mutex_);
    std::erase_if(timers_, [timer](const auto& entry) { return entry.first.second == timer; });
}

void ThreadExecutor::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        Task task;
        {
            std::unique_lock lock(mutex_);
            for (;;) {
                if (!main_.empty()) {
                    task = std::move(main_.front());
                    main_.pop_front();
                    break;
                }
                if (!timers_.empty() && timers_.begin()->first.first <= now()) {
                    task = std::move(timers_.extract(timers_.begin()).mapped());
                    break;
                }
                if (timers_.empty()) {
                    wake_.wait(lock);
                } else {
                    auto wait = std::chrono::duration<double>(timers_.begin()->first.first - now());
                    wake_.wait_for(lock, wait);
                }
            }
        }
        task();
    }
}

}  // namespace kinfolio
