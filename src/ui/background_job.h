// One piece of work on a thread of its own, so that the window keeps answering. A new
// run cancels the one before; the destructor cancels and waits. The work hands its
// results to the window itself (QMetaObject::invokeMethod with a queued connection).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace qm::ui {

class BackgroundJob {
 public:
  using Work = std::function<void(const std::atomic<bool>& cancel)>;

  BackgroundJob() = default;
  BackgroundJob(const BackgroundJob&) = delete;
  BackgroundJob& operator=(const BackgroundJob&) = delete;
  ~BackgroundJob() { Stop(); }

  void Run(Work work) {
    Stop();
    cancel_ = std::make_shared<std::atomic<bool>>(false);
    thread_ = std::thread([work = std::move(work), cancel = cancel_] { work(*cancel); });
  }

  void Stop() {
    if (cancel_) cancel_->store(true);
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::shared_ptr<std::atomic<bool>> cancel_;
  std::thread thread_;
};

}  // namespace qm::ui
