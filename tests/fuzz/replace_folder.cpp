// Replaces an output folder by one with a file of the given contents, as an insertion does; for the tests of crashes.
#include <cstdio>

#include "platform/insert/output_folder.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const QString name = QString::fromLatin1("a.v");
  QString error;
  ost::OutputFolder folder(QString::fromLocal8Bit(argv[1]));
  if (folder.begin({name}, error) && folder.write(name, argv[2], error) && folder.commit(error)) return 0;
  std::printf("%s\n", qPrintable(error));
  return 1;
}
