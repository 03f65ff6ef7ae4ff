// Walks over the text once, with the keys of the objects that are open.
#include "platform/istdata/json_keys.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <QSet>
#include <vector>

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

int findRepeatedKey(const QByteArray& json, QByteArray& key) {
  KeyWatch watch;
  rapidjson::MemoryStream stream(json.constData(), std::size_t(json.size()));
  rapidjson::Reader reader;
  reader.Parse<rapidjson::kParseIterativeFlag>(stream, watch);
  key = watch.repeated;
  return watch.found ? int(stream.Tell()) : -1;
}

}  // namespace ost
