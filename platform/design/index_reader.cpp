// Reads the names out of a Yosys JSON netlist as a stream: memory grows with the public names, not with the file.
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>
#include <unistd.h>

#include <QHash>
#include <limits>

#include "platform/design/enum_types.h"
#include "platform/design/file_stream.h"
#include "platform/design/ghdl.h"
#include "platform/design/name_index.h"
#include "platform/design/own_names.h"
#include "platform/text/byte_text.h"
#include "platform/text/json_memory.h"

namespace ost {
namespace {

constexpr int kMaxJsonDepth = 64;
constexpr rapidjson::SizeType kMaxNameLength = 65535;
constexpr int kMaxWidth = 1 << 24;

// Where the reader stands: the levels of {"modules": {M: {section: {item: {key: [..]}}}}}.
enum Level { kRoot = 1, kModules, kModule, kSection, kItem, kItemValue };

class Handler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler> {
 public:
  explicit Handler(NameIndex& index) : index_(index), enums_(index.enumTypes) {}

  QString problem;  ///< Set when a callback returned false.
  bool sawModules = false;
  /// Cell types by number, and for each instance the number of its type, in the order of the modules' instances.
  QVector<QByteArray> types;

  bool Null() { return scalar(Scalar()); }
  bool Bool(bool) { return scalar(Scalar()); }
  bool Double(double) { return scalar(Scalar()); }
  bool Int(int value) { return scalar(Scalar(value)); }
  bool Uint(unsigned value) { return scalar(Scalar(value)); }
  bool Int64(int64_t value) { return scalar(Scalar(value)); }
  bool Uint64(uint64_t value) { return scalar(value > uint64_t(1) << 62 ? Scalar() : Scalar(int64_t(value))); }
  bool String(const char* text, rapidjson::SizeType length, bool) { return scalar(Scalar(text, length)); }

  bool Key(const char* text, rapidjson::SizeType length, bool) {
    if (!inModules_ && depth_ == kRoot) {
      rootKey_ = QByteArray(text, static_cast<int>(length));
      return true;
    }
    if (!inModules_) return true;
    if (length > kMaxNameLength) return fail("a name is longer than 65535 bytes");
    switch (depth_) {
      case kModules:
        return beginModule(QByteArray(text, static_cast<int>(length)));
      case kModule:
        section_ = sectionOf(std::string_view(text, length));
        return true;
      case kSection:
        if (section_ == kNets || section_ == kCells || section_ == kMemories || section_ == kAttributes) {
          item_.assign(text, length);
        }
        key_ = kOther;
        width_ = -1;
        offset_ = 0;
        upto_ = hidden_ = wholeName_ = false;
        type_.clear();
        watch_.clear();
        enums_.beginNet();
        return true;
      case kItem:
        key_ = keyOf(std::string_view(text, length));
        return true;
      case kItemValue:
        attribute_.assign(text, length);
        return true;
      default:
        return true;
    }
  }

  bool StartObject() {
    if (++depth_ > kMaxJsonDepth) return fail("it is nested deeper than 64 levels");
    if (depth_ == kModules && rootKey_ == "modules" && !arrays_) {
      if (sawModules) return fail("\"modules\" stands twice");
      inModules_ = sawModules = true;
    }
    return !inModules_ || arrays_ == 0 || fail("an object stands where a bit of a net was expected");
  }
  bool EndObject(rapidjson::SizeType) {
    if (inModules_ && depth_ == kItem && !endItem()) return false;
    if (depth_ == kModules) {
      inModules_ = false;
      rootKey_.clear();
    }
    --depth_;
    return true;
  }
  bool StartArray() {
    ++arrays_;
    if (++depth_ > kMaxJsonDepth) return fail("it is nested deeper than 64 levels");
    if (depth_ == kModules && rootKey_ == "modules") return fail("\"modules\" is not an object");
    if (inModules_ && depth_ <= kItem) return fail("a list stands where an object was expected");
    if (depth_ == kItemValue && collecting()) width_ = 0;
    return true;
  }
  bool EndArray(rapidjson::SizeType) {
    --arrays_;
    --depth_;
    return true;
  }

 private:
  enum Section { kUnread, kAttributes, kCells, kNets, kMemories };
  enum ItemKey { kOther, kBits, kOffset, kUpto, kHidden, kType, kItemAttributes };

  struct Scalar {
    enum { None, Number, Text } kind = None;
    int64_t number = 0;
    std::string_view text;
    Scalar() {}
    explicit Scalar(int64_t value) : kind(Number), number(value) {}
    Scalar(const char* data, rapidjson::SizeType length) : kind(Text), text(data, length) {}
  };

  static Section sectionOf(std::string_view name) {
    return name == "netnames"     ? kNets
           : name == "cells"      ? kCells
           : name == "attributes" ? kAttributes
           : name == "memories"   ? kMemories
                                  : kUnread;
  }
  static ItemKey keyOf(std::string_view name) {
    return name == "bits"         ? kBits
           : name == "offset"     ? kOffset
           : name == "upto"       ? kUpto
           : name == "hide_name"  ? kHidden
           : name == "type"       ? kType
           : name == "attributes" ? kItemAttributes
                                  : kOther;
  }
  bool collecting() const { return inModules_ && section_ == kNets && key_ == kBits && arrays_ == 1; }
  ModuleEntry& module() { return index_.modules.back(); }

  bool fail(const char* text) {
    problem = textFromBytes(text);
    if (!index_.modules.empty()) {
      problem += QStringLiteral(" (module \"%1\"").arg(textFromBytes(module().key));
      if (depth_ >= kItem && !item_.empty()) {
        problem += QStringLiteral(", \"%1\"").arg(textFromView(item_));
      }
      problem += QLatin1Char(')');
    }
    return false;
  }

  bool beginModule(const QByteArray& key) {
    if (key.isEmpty() || !isPrintableName(std::string_view(key.constData(), size_t(key.size()))))
      return fail("a module's name is empty, or holds a blank or a control character");
    if (known_.contains(key)) return fail("a module stands twice");
    known_.insert(key, true);
    index_.modules.emplace_back();
    module().key = key;
    section_ = kUnread;
    item_.clear();
    return true;
  }

  bool scalar(const Scalar& value) {
    if (!inModules_) {
      return depth_ != kRoot || rootKey_ != "modules" || fail("\"modules\" is not an object");
    }
    if (depth_ == kModules) return fail("a module is not an object");
    if (depth_ == kSection && section_ == kAttributes) return attribute(value);
    if (depth_ == kSection && section_ != kUnread) return fail("an entry is not an object");
    if (depth_ == kItemValue && collecting()) return bit(value);
    if (depth_ == kItemValue && section_ == kNets && key_ == kItemAttributes) {
      if (value.kind == Scalar::Text) netAttribute(value.text);
      return true;
    }
    if (depth_ != kItem) return true;
    if (section_ == kNets) {
      switch (key_) {
        case kBits:
          return fail("\"bits\" is not a list");
        case kOffset:
          if (value.kind != Scalar::Number || value.number < -(1 << 30) || value.number > (1 << 30)) {
            return fail("\"offset\" is not a number of a sensible size");
          }
          offset_ = static_cast<qint32>(value.number);
          return true;
        case kUpto:
        case kHidden:
          if (value.kind != Scalar::Number || value.number < 0 || value.number > 1) {
            return fail("\"upto\" or \"hide_name\" is neither 0 nor 1");
          }
          (key_ == kUpto ? upto_ : hidden_) = value.number == 1;
          return true;
        default:
          return true;
      }
    }
    if (section_ == kCells && key_ == kType) {
      if (value.kind != Scalar::Text || value.text.empty()) return fail("a cell's \"type\" is not a name");
      if (value.text.size() > kMaxNameLength) return fail("a cell's \"type\" is longer than 65535 bytes");
      if (!isPrintableName(value.text)) return fail("a cell's \"type\" holds a blank or a control character");
      type_.assign(value.text);
    }
    return true;
  }

  bool bit(const Scalar& value) {
    const bool good = value.kind == Scalar::Number
                          ? value.number >= 0
                          : value.kind == Scalar::Text &&
                                (value.text == "0" || value.text == "1" || value.text == "x" || value.text == "z");
    if (!good) return fail("a net's bit is neither a number nor \"0\", \"1\", \"x\" or \"z\"");
    return ++width_ <= kMaxWidth || fail("a net has more than 16777216 bits");
  }

  bool attribute(const Scalar& value) {
    if (item_ == "ostrel_role" && value.kind == Scalar::Text) {
      module().roles = QByteArray(value.text.data(), int(value.text.size()));
    } else if (item_ == kVhdlAttribute) {
      module().vhdl = true;
    } else if (item_ == "top") {
      module().topAttribute = isTrue(value);
    } else if (item_ == "blackbox" || item_ == "whitebox") {
      module().bodyless |= isTrue(value);
    }
    return true;
  }

  /// True when the place "file:line.column-line.column" of a net's declaration is longer than the net's name, as that
  /// of an escaped identifier is, its backslash included. A name with its generate blocks is longer than its place.
  bool isWrittenWhole(std::string_view place) const {
    const size_t dash = place.rfind('-');
    const auto columnAt = [&](size_t end) {
      const std::string_view text = place.substr(0, end);
      const size_t dot = text.rfind('.');
      return dot == std::string_view::npos ? 0 : atoi(std::string(text.substr(dot + 1)).c_str());
    };
    return dash != std::string_view::npos && columnAt(place.size()) - columnAt(dash) > int(item_.size());
  }

  void netAttribute(std::string_view text) {
    if (attribute_ == "src" && item_.find('.') != std::string::npos) wholeName_ = isWrittenWhole(text);
    if (attribute_ == "ostrel_watch" && isSetAttribute(text)) watch_ = wordOf(text);
    enums_.take(attribute_, text);
  }

  /// The attribute's text; "signal" where the source gives it none, which Yosys writes as the number 1.
  static QByteArray wordOf(std::string_view text) {
    const bool number = text.find_first_not_of("01xz") == std::string_view::npos;
    return number ? QByteArray("signal") : QByteArray(text.data(), int(text.size())).trimmed();
  }

  static bool isTrue(const Scalar& value) {
    return value.kind == Scalar::Number ? value.number != 0 : isSetAttribute(value.text);
  }

  // The name as the source spells it, in the common text. Yosys guards some public names with a backslash.
  bool keepName(NameRef& ref) {
    std::string_view name = item_;
    if (name.size() > 1 && name[0] == '\\' &&
        (name[1] == '$' || name[1] == '\\' || (name[1] >= '0' && name[1] <= '9'))) {
      name.remove_prefix(1);
    }
    if (name.empty()) return fail("a name is empty");
    module().unnamedBlocks |= name.find("genblk") != std::string_view::npos;
    if (!isPrintableName(name)) return fail("a name holds a blank or a control character");
    index_.slashNames |= name.find('/') != std::string_view::npos;
    index_.slashNames |= name[0] == '\\';
    if (size_t(index_.text.size()) + name.size() > size_t(std::numeric_limits<int>::max()) - 64) {
      return fail("its names take more than 2 GB");
    }
    ref.at = static_cast<quint32>(index_.text.size());
    ref.length = static_cast<quint32>(name.size());
    index_.text.append(name.data(), static_cast<int>(name.size()));
    return true;
  }

  bool endItem() {
    if (section_ == kNets) {
      if (width_ < 0) return fail("a net has no \"bits\"");
      if (hidden_ || width_ == 0 || isFunctionHelper(item_)) return true;
      NetEntry net;
      net.width = width_;
      net.offset = offset_;
      net.upto = upto_;
      net.wholeName = wholeName_;
      net.enumType = enums_.typeOf(width_);
      if (!keepName(net.name)) return false;
      module().nets.push_back(net);
      if (!watch_.isEmpty()) module().watched.push_back({net.name, watch_});
    } else if (section_ == kCells) {
      if (type_.empty()) return fail("a cell has no \"type\"");
      if (type_[0] == '$' && type_.compare(0, 8, "$paramod") != 0) return true;
      InstanceEntry instance;
      if (!keepName(instance.name)) return false;
      const QByteArray type(type_.data(), int(type_.size()));
      const auto found = typeNumber_.constFind(type);
      instance.module = found != typeNumber_.constEnd() ? *found : types.size();
      if (found == typeNumber_.constEnd()) {
        typeNumber_.insert(type, types.size());
        types.append(type);
      }
      module().instances.push_back(instance);
    } else if (section_ == kMemories) {
      NameRef name;
      if (item_[0] == '$') return true;
      if (!keepName(name)) return false;
      module().memories.push_back(name);
    }
    return true;
  }

  NameIndex& index_;
  QHash<QByteArray, bool> known_;
  QHash<QByteArray, int> typeNumber_;
  QByteArray rootKey_, watch_;
  bool inModules_ = false;
  int depth_ = 0, arrays_ = 0;
  Section section_ = kUnread;
  ItemKey key_ = kOther;
  std::string item_, type_, attribute_;
  EnumTypes enums_;
  int width_ = -1;
  qint32 offset_ = 0;
  bool upto_ = false, hidden_ = false, wholeName_ = false;
};

}  // namespace

bool readNameIndex(int fd, const QString& fileName, NameIndex& index, QString& error) {
  if (lseek(fd, 0, SEEK_SET) != 0) {
    error = QStringLiteral("Cannot read \"%1\"").arg(fileName);
    return false;
  }
  FileStream stream(fd);
  Handler handler(index);
  rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> reader;
  const rapidjson::ParseResult result =
      reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(stream, handler);
  if (result.IsError()) {
    const QString what = result.Code() == rapidjson::kParseErrorTermination
                             ? handler.problem
                             : textFromBytes(rapidjson::GetParseError_En(result.Code()));
    error = QStringLiteral("\"%1\" is not a usable Yosys JSON netlist: %2, at byte %3")
                .arg(fileName, what)
                .arg(qulonglong(result.Offset()));
    return false;
  }
  if (!handler.sawModules || index.modules.empty()) {
    error = QStringLiteral("\"%1\" holds no module").arg(fileName);
    return false;
  }
  index.text.squeeze();

  // Cell types may name modules that come later in the file.
  QHash<QByteArray, int> moduleNumber;
  for (size_t i = 0; i < index.modules.size(); ++i) moduleNumber.insert(index.modules[i].key, int(i));
  QVector<int> moduleOfType;
  for (const QByteArray& type : qAsConst(handler.types)) {
    moduleOfType.append(moduleNumber.value(type, -1));
    if (moduleOfType.last() < 0) index.unknownTypes.append(type);
  }
  for (ModuleEntry& module : index.modules) {
    auto& all = module.instances;
    for (InstanceEntry& instance : all) instance.module = moduleOfType.at(instance.module);
    all.erase(std::remove_if(all.begin(), all.end(), [](const InstanceEntry& i) { return i.module < 0; }), all.end());
    all.shrink_to_fit();
    module.nets.shrink_to_fit();
  }
  return true;
}

}  // namespace ost
