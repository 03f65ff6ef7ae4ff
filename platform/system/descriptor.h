// The one owner of an open file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace ost {

/// Closes its descriptor at the end of its life. Where a failed close matters (a file was written), close() tells.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~Descriptor() { reset(); }

  bool isOpen() const { return fd_ >= 0; }
  int fd() const { return fd_; }  ///< -1 when nothing is open.
  /// Hands the descriptor over to the caller.
  int release() { return std::exchange(fd_, -1); }
  void reset(int fd = -1) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = fd;
  }
  /// False, with errno, when the system reports that written data is lost. The descriptor is closed either way.
  bool close() { return fd_ < 0 || ::close(release()) == 0; }

 private:
  int fd_ = -1;
};

}  // namespace ost
