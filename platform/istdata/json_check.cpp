// Walks over the text once, with the keys of the objects that are open.
#include "platform/istdata/json_check.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <QSet>
#include <vector>

#include "platform/istdata/json_memory.h"
#include "platform/istdata/names.h"
#include "platform/istdata/wire_text.h"

namespace ost {

namespace {

struct KeyWatch : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, KeyWatch> {
  bool StartObject() {
    open.emplace_back();
    return true;
  }
  bool EndObject(rapidjson::SizeType) {
    open.pop_back();
    return true;
  }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    const QByteArray key(text, int(length));
    if (open.back().contains(key)) {
      repeated = key;
      found = true;
      return false;
    }
    open.back().insert(key);
    return true;
  }

  std::vector<QSet<QByteArray>> open;
  QByteArray repeated;
  bool found = false;
};

}  // namespace

bool checkJson(const QByteArray& json, int& offset, QString& fault) {
  const int mark = json.startsWith("\xef\xbb\xbf") ? 3 : 0;
  KeyWatch watch;
  rapidjson::MemoryStream stream(json.constData() + mark, std::size_t(json.size() - mark));
  rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> reader;
  const rapidjson::ParseResult result = reader.Parse<rapidjson::kParseIterativeFlag>(stream, watch);
  if (!result.IsError()) return true;
  offset = mark + int(result.Offset());
  if (watch.found) {
    fault = QString("the key %1 stands twice").arg(quoted(wireFromBytes(watch.repeated)));
  } else {
    fault = rapidjson::GetParseError_En(result.Code());
    fault.chop(fault.endsWith('.') ? 1 : 0);
  }
  return false;
}

}  // namespace ost
