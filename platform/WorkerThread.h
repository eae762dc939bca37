#ifndef PLATFORM_WORKERTHREAD_H_
#define PLATFORM_WORKERTHREAD_H_

#include <memory>

namespace platform {

/// What a worker thread does.
class Work {
 public:
  Work() = default;
  virtual ~Work() = default;
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  virtual void Run() = 0;
};

/// Starts a detached thread that runs the work and then destroys it. \returns false, with the work
/// destroyed and not run, when no thread can be started, or when the process has so little address
/// space left that everything else would suffer from one more.
bool StartWorker(std::unique_ptr<Work> work);

}  // namespace platform

#endif  // PLATFORM_WORKERTHREAD_H_
