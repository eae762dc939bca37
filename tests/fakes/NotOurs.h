#ifndef TESTS_FAKES_NOTOURS_H_
#define TESTS_FAKES_NOTOURS_H_

/// Marks what runs inside a fake, so that a test which counts the product's allocations leaves out
/// those of the stand-in.
class NotOurs {
 public:
  NotOurs() { ++depth_; }
  ~NotOurs() { --depth_; }
  NotOurs(const NotOurs&) = delete;
  NotOurs& operator=(const NotOurs&) = delete;

  static bool Inside() { return depth_ != 0; }

 private:
  static inline thread_local int depth_ = 0;  // workers use fakes, too
};

#endif  // TESTS_FAKES_NOTOURS_H_
