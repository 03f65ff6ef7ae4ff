// The words of a command for the Wishbone master, and its files.
#include "platform/reader/wishbone_command.h"

#include "platform/reader/output_files.h"
#include "platform/reader/wishbone_reader.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMostWords = 1 << 20;
constexpr qint64 kMostFileBytes = qint64(kMostWords) * kWishboneWordBytes;

/// "4096" or "0x1000".
bool parseNumber(const QString& word, quint64 most, const char* what, quint64& number, QString& error) {
  const bool hex = word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
  bool good = false;
  number = hex ? word.mid(2).toULongLong(&good, 16) : word.toULongLong(&good, 10);
  if (good && number <= most) return true;
  error = QStringLiteral("\"%1\" is no %2; give a number from 0 to 0x%3, decimal or with 0x.")
              .arg(word, QLatin1String(what), QString::number(most, 16));
  return false;
}

bool parseAddress(const QString& word, WishboneCommand& command, QString& error) {
  quint64 number = 0;
  if (!parseNumber(word, 0xFFFFFFFFu, "address", number, error)) return false;
  command.address = quint32(number);
  return true;
}

bool parseWordCount(const QString& word, WishboneCommand& command, QString& error) {
  quint64 number = 0;
  if (!parseNumber(word, kMostWords, "count", number, error)) return false;
  command.count = int(number);
  if (number > 0) return true;
  error = QStringLiteral("A count of 0 transfers nothing; give 1 or more.");
  return false;
}

bool parseData(const QStringList& words, WishboneCommand& command, QString& error) {
  for (const QString& word : words) {
    quint64 number = 0;
    if (!parseNumber(word, (quint64(1) << 8 * command.size) - 1, "datum", number, error)) return false;
    command.numbers.append(quint32(number));
  }
  return true;
}

}  // namespace

constexpr char WishboneCommand::kUsage[];

bool parseWishboneCommand(const QStringList& words, WishboneCommand& command, QString& error) {
  const QString verb = words.value(0);
  const int count = words.size();
  for (const int size : {1, 2, 4}) {
    const QString bits = size < 4 ? QString::number(8 * size) : QString();
    const bool reads = verb == QLatin1String("read") + bits;
    if (!reads && verb != QLatin1String("write") + bits) continue;
    command.kind = reads ? WishboneCommand::Read : WishboneCommand::Write;
    command.size = size;
    if (reads && (count == 2 || count == 3))
      return parseAddress(words[1], command, error) && (count == 2 || parseWordCount(words[2], command, error));
    if (!reads && count > 2) return parseAddress(words[1], command, error) && parseData(words.mid(2), command, error);
  }
  if (verb == QLatin1String("load") && count == 3) {
    command.kind = WishboneCommand::Load;
    command.file = words[1];
    return parseAddress(words[2], command, error);
  }
  if (verb == QLatin1String("dump") && count == 4) {
    command.kind = WishboneCommand::Dump;
    command.file = words[3];
    return parseAddress(words[1], command, error) && parseWordCount(words[2], command, error);
  }
  error = QStringLiteral("\"%1\" is no command for the Wishbone master; give %2.")
              .arg(words.join(QLatin1Char(' ')), QLatin1String(WishboneCommand::kUsage));
  return false;
}

bool runWishboneCommand(const WishboneCommand& command, WishboneReader& reader, QVector<quint32>& read,
                        QString& error) {
  QByteArray bytes;
  QString reason;
  switch (command.kind) {
    case WishboneCommand::Read:
      return reader.read(command.address, command.size, command.count, read, error);
    case WishboneCommand::Write:
      return reader.write(command.address, command.size, command.numbers, error);
    case WishboneCommand::Load:
      if (readFile(fileFromText(command.file), kMostFileBytes, bytes, reason))
        return reader.writeBytes(command.address, bytes, error);
      error = QStringLiteral("Cannot read \"%1\": %2.").arg(command.file, reason);
      return false;
    case WishboneCommand::Dump:
      break;
  }
  const OutputFile file{command.file};
  return file.check(error) && reader.readBytes(command.address, command.count, bytes, error) &&
         storeAll({{file, bytes}}, error);
}

QString wishboneNumber(const WishboneCommand& command, quint32 number) {
  return QStringLiteral("0x%1").arg(number, 2 * command.size, 16, QLatin1Char('0'));
}

}  // namespace ost
