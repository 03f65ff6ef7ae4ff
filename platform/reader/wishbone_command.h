// What `-wb` of ost_capture and `wb` of a hub's command ask for.
#pragma once

#include <QStringList>
#include <QVector>

namespace ost {

class WishboneReader;

struct WishboneCommand {
  enum Kind { Read, Write, Load, Dump } kind = Read;
  int size = 4;  ///< Bytes of a number.
  quint32 address = 0;
  int count = 1;  ///< Numbers to read, words to dump.
  QVector<quint32> numbers;
  QString file;  ///< Byte text.

  static constexpr char kUsage[] =
      "read|read8|read16 ADDRESS ?COUNT?, write|write8|write16 ADDRESS DATA..., load FILE ADDRESS or dump ADDRESS "
      "COUNT "
      "FILE";
};

/// False with `error`, which names the word that is wrong.
bool parseWishboneCommand(const QStringList& words, WishboneCommand& command, QString& error);

/// Carries it out; `read` gets the numbers of Read.
bool runWishboneCommand(const WishboneCommand& command, WishboneReader& reader, QVector<quint32>& read, QString& error);

/// A number with as many hexadecimal digits as its bytes have.
QString wishboneNumber(const WishboneCommand& command, quint32 number);

}  // namespace ost
