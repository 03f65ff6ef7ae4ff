// The numbered messages, as data.
#pragma once

#include <QList>
#include <QString>

namespace ost {

/// `%1` and `%2` stand for the arguments, `%q` for the first one in quotes after a blank, or nothing when it is empty,
/// `%r` for the reason that the service itself found, with a leading ": ", or a full stop where there is none.
struct CatalogueMessage {
  const char* code;
  const char* text;
};

QList<CatalogueMessage> messageCatalogue();

/// The message's line, without a line feed. A code that is not in the catalogue is shown with its arguments.
QString catalogueText(const QString& code, const QString& arg1, const QString& arg2, const QString& reason);

}  // namespace ost
