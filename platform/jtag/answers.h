// The two shapes of answers: so many bytes, or text up to a byte that ends it.
#pragma once

#include "platform/jtag/connection.h"

namespace ost {

class CountedAnswer : public Answer {
 public:
  explicit CountedAnswer(int count) : count_(count) { bytes_.reserve(count); }
  const QByteArray& bytes() const { return bytes_; }

  int due() const override { return count_ - bytes_.size(); }
  QString take(const char* bytes, int count) override {
    bytes_.append(bytes, count);
    return QString();
  }
  QString progress() const override { return QStringLiteral("%1 of %2 replies came").arg(bytes_.size()).arg(count_); }

 private:
  int count_;
  QByteArray bytes_;
};

class TextAnswer : public Answer {
 public:
  /// At most `most` bytes before `end`.
  TextAnswer(char end, int most) : end_(end), most_(most) {}
  const QByteArray& text() const { return text_; }  ///< Without the end.

  int due() const override { return complete_ ? 0 : most_ + 1 - text_.size(); }
  QString take(const char* bytes, int count) override {
    text_.append(bytes, count);
    const int at = text_.indexOf(end_);
    complete_ = at >= 0;
    if (complete_ && at + 1 < text_.size()) return QStringLiteral("it replied with more than it was asked for");
    if (!complete_ && text_.size() > most_) return QStringLiteral("its reply does not end");
    text_.truncate(complete_ ? at : text_.size());
    return QString();
  }
  QString progress() const override { return QStringLiteral("%1 bytes of its reply came").arg(text_.size()); }

 private:
  char end_;
  int most_;
  bool complete_ = false;
  QByteArray text_;
};

/// What a server said, fit for a message: its first line, printable, 200 characters at most.
QString quotable(const QByteArray& text);

}  // namespace ost
