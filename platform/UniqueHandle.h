#ifndef PLATFORM_UNIQUEHANDLE_H_
#define PLATFORM_UNIQUEHANDLE_H_

#include <utility>

/// Owns one handle of the kind that `Traits` describes: its `Type`, its `None()` value and how to
/// `Close()` it. `put()` fills one in, `get()` lends it, `release()` lets go of it for good.
template <typename Traits>
class UniqueHandle {
 public:
  using Type = typename Traits::Type;

  UniqueHandle() = default;
  explicit UniqueHandle(Type handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  Type get() const { return handle_; }
  explicit operator bool() const { return handle_ != Traits::None(); }

  /// The address of the empty handle, for an out parameter. What was owned is closed first.
  Type* put() {
    reset();
    return &handle_;
  }

  /// Gives up ownership; every use says why in a comment.
  [[nodiscard]] Type release() { return std::exchange(handle_, Traits::None()); }

  void reset(Type handle = Traits::None()) {
    const Type old = std::exchange(handle_, handle);
    if (old != Traits::None()) Traits::Close(old);
  }

 private:
  Type handle_ = Traits::None();
};

#endif  // PLATFORM_UNIQUEHANDLE_H_
