// An open file as the JSON parser reads it, piece by piece.
#pragma once

#include <errno.h>
#include <unistd.h>

#include <vector>

namespace ost {

/// A RapidJSON input stream over a descriptor, which stays the caller's; a failed read ends the text.
class FileStream {
 public:
  typedef char Ch;
  explicit FileStream(int fd) : fd_(fd), buffer_(1 << 16) { refill(); }
  Ch Peek() const { return at_ < have_ ? buffer_[at_] : '\0'; }
  Ch Take() {
    const Ch c = Peek();
    if (at_ < have_ && ++at_ == have_) refill();
    return c;
  }
  size_t Tell() const { return before_ + at_; }
  bool atEnd() const { return at_ >= have_; }

  // For streams that are written in place; never called.
  Ch* PutBegin() { return nullptr; }
  void Put(Ch) {}
  void Flush() {}
  size_t PutEnd(Ch*) { return 0; }

 private:
  void refill() {
    before_ += have_;
    at_ = 0;
    ssize_t got;
    do got = ::read(fd_, buffer_.data(), buffer_.size());
    while (got < 0 && errno == EINTR);
    have_ = got > 0 ? static_cast<size_t>(got) : 0;
  }
  int fd_;
  std::vector<char> buffer_;
  size_t at_ = 0, have_ = 0, before_ = 0;
};

}  // namespace ost
