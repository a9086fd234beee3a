// A bounded queue between the thread that walks the store and the thread
// that writes the export. The walker pushes steps in tree order and the
// writer takes them in that order, so the output is the same as when one
// thread does both. The bound is in message bytes: the queue never holds
// more than a few megabytes, whatever the store's size.
#ifndef TQNRALM_TOOL_STEPQUEUE_H
#define TQNRALM_TOOL_STEPQUEUE_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace tqnralm {

template <typename Step>
class StepQueue {
public:
    explicit StepQueue(size_t byteLimit) : limit_(byteLimit) {}

    // Waits for room, then adds the step. False when the writer has stopped:
    // the step is dropped and the walker should stop too. A step larger than
    // the bound goes in alone.
    bool Push(Step step, size_t bytes) {
        std::unique_lock<std::mutex> lock(mutex_);
        room_.wait(lock, [&] { return stopped_ || held_ == 0 || held_ + bytes <= limit_; });
        if (stopped_) return false;
        held_ += bytes;
        steps_.emplace_back(std::move(step), bytes);
        ready_.notify_one();
        return true;
    }

    // Waits for the next step. False when the walker has closed the queue
    // and every step was taken.
    bool Pop(Step* step) {
        std::unique_lock<std::mutex> lock(mutex_);
        ready_.wait(lock, [&] { return closed_ || !steps_.empty(); });
        if (steps_.empty()) return false;
        *step = std::move(steps_.front().first);
        held_ -= steps_.front().second;
        steps_.pop_front();
        room_.notify_one();
        return true;
    }

    // The walker is done.
    void Close() {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        ready_.notify_all();
    }

    // The writer has failed: the steps still queued are dropped and every
    // later Push fails.
    void Stop() {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
        steps_.clear();
        held_ = 0;
        room_.notify_all();
    }

private:
    const size_t limit_;
    std::mutex mutex_;
    std::condition_variable ready_, room_;
    std::deque<std::pair<Step, size_t>> steps_;
    size_t held_ = 0;
    bool closed_ = false;
    bool stopped_ = false;
};

}  // namespace tqnralm

#endif
