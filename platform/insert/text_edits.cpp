// Replacements within one text.
#include "platform/insert/text_edits.h"

namespace ost {

void TextEdits::replace(TextSpan span, const QByteArray& text) {
  edits_.emplace(span.begin, Edit{span.end, text});
}

bool TextEdits::write(std::string_view original, TextSpan span, QIODevice& device) const {
  size_t done = span.begin;
  const auto copy = [&](size_t end) {
    const qint64 size = qint64(end - done);
    return device.write(original.data() + done, size) == size;
  };
  for (auto edit = edits_.lower_bound(span.begin); edit != edits_.end() && edit->first < span.end; ++edit) {
    if (!copy(edit->first) || device.write(edit->second.text) != edit->second.text.size()) return false;
    done = edit->second.end;
  }
  return copy(span.end);
}

}  // namespace ost
