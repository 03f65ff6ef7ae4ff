// Changes to a text that stays as it is: they are kept by place, and made while the text is written.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <map>
#include <string_view>

#include "platform/netlist/netlist_text.h"

namespace ost {

/// Replacements within one text, kept by offset.
class TextEdits {
 public:
  void replace(TextSpan span, const QByteArray& text);
  void insert(size_t offset, const QByteArray& text) { replace({offset, offset}, text); }
  void add(const TextEdits& other) { edits_.insert(other.edits_.begin(), other.edits_.end()); }
  /// Writes the span of `original` with the edits that lie in it. False when the device fails.
  bool write(std::string_view original, TextSpan span, QIODevice& device) const;

 private:
  struct Edit {
    size_t end;
    QByteArray text;
  };
  std::multimap<size_t, Edit> edits_;
};

}  // namespace ost
