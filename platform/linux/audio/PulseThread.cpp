#include "platform/linux/audio/PulseThread.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace hushbox {
namespace {

// Signals are for the main thread. A thread inherits the mask of the one that starts it.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

PulseThread::PulseThread(std::shared_ptr<PulseReportQueue> reports)
    : observer_(std::make_shared<PulseObserver>(std::move(reports))) {
  const SignalsBlocked blocked;
  std::promise<void> finished;
  finished_ = finished.get_future();
  thread_ = std::thread([observer = observer_, finished = std::move(finished)]() mutable {
    observer->run();
    finished.set_value();
  });
}

PulseThread::~PulseThread() {
  observer_->stop();
  if (finished_.wait_for(stopTimeout) == std::future_status::ready) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void PulseThread::write(const PulseWrite& write) {
  observer_->write(write);
}

}  // namespace hushbox
