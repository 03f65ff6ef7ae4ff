// The Wishbone master on a bus with another master, against a slave that makes trouble, on a quiet and a noisy line.
#include <QDir>
#include <QFile>

#include "platform/reader/wishbone_reader.h"
#include "platform/rtl/debug_module.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

constexpr double kNoise = 1e-3;
constexpr double kUsefulShare = 0.8;  ///< Of the TCK cycles, for 1024 words.

/// The bus record that the transfers must leave.
class Expected {
 public:
  explicit Expected(bool bigEndian) : bigEndian_(bigEndian) {}
  void add(char kind, quint32 address, quint32 data, int lanes = 15) {
    // Lane 0 is the byte at the lowest address.
    int sel = 0;
    for (int lane = 0; lane < 4; ++lane) sel |= (lanes >> lane & 1) << (bigEndian_ ? 3 - lane : lane);
    lines_ += QString("%1 %2 %3 %4\n")
                  .arg(QChar(kind))
                  .arg(address, 8, 16, QChar('0'))
                  .arg(data, 8, 16, QChar('0'))
                  .arg(sel, 4, 2, QChar('0'))
                  .toUtf8();
  }
  const QByteArray& lines() const { return lines_; }

 private:
  const bool bigEndian_;
  QByteArray lines_;
};

class WishboneScene {
 public:
  WishboneScene(const Settings& settings, bool bigEndian) : settings_(settings), expected_(bigEndian) {
    plan_.topModule = "tb";
    plan_.projectHash = "0123456789abcdef";
    plan_.wishbone.emplace();
    plan_.wishbone->isBigEndian = bigEndian;
  }
  void play(double noise, Totals& totals);

 private:
  using Reader = ost::WishboneReader;
  void compile();
  void words(Live& live, Reader& reader, int count, bool isTimed);
  void bytes(Reader& reader);
  void failures(Reader& reader, Reader& impatient);
  void fails(bool good, const QString& error, const char* text) {
    mustHold(!good && error.contains(text), QString("instead of \"%1\": %2").arg(text, good ? "no error" : error));
  }

  const Settings& settings_;
  ost::InsertPlan plan_;
  BenchFiles files_;
  Expected expected_;
  QString error_;
};

void WishboneScene::compile() {
  files_.folder = settings_.work + "/wishbone";
  QDir(files_.folder).removeRecursively();
  need(QDir().mkpath(files_.folder), "cannot make " + files_.folder);
  QStringList words{"iverilog",
                    "-g2005",
                    "-o",
                    "capture.vvp",
                    "-s",
                    "tb",
                    settings_.sources + "/tests/sim/designs/wishbone.v",
                    settings_.sources + "/platform/jtag/sim/ostrel_jtag_sim.v",
                    "ostrel_debug.v"};
  writeFile(files_.folder + "/ostrel_debug.v", debugModuleVerilog(plan_));
  for (const auto& [name, text] : ost::coreVerilogFiles()) {
    const QString other = settings_.core + "/" + name;
    const bool isReplaced = !settings_.core.isEmpty() && QFile::exists(other);
    writeFile(files_.folder + "/" + name, isReplaced ? contentsOf(other) : text);
    words += name;
  }
  runTool(words, files_.folder, "capture_build.log");
}

void WishboneScene::words(Live& live, Reader& reader, int count, bool isTimed) {
  QVector<quint32> written, read;
  for (int i = 0; i < count; ++i) written += quint32(i) * 0x9E3779B9u + 0x01020304u;
  const qint64 before = live.hub.cycles();
  mustHold(reader.write(0, 4, written, error_), "write: ", error_);
  const qint64 between = live.hub.cycles();
  mustHold(reader.read(0, 4, count, read, error_), "read: ", error_);
  mustHold(read == written, "the words read are not those written");
  for (int i = 0; i < count; ++i) expected_.add('w', quint32(4 * i), written[i]);
  for (int i = 0; i < count; ++i) expected_.add('r', quint32(4 * i), 0);
  if (!isTimed) return;
  const double bits = 32.0 * count, writing = double(between - before), reading = double(live.hub.cycles() - between);
  printf("wishbone: %d words written in %.0f TCK cycles (%.1f %% data), read in %.0f (%.1f %%)\n", count, writing,
         100 * bits / writing, reading, 100 * bits / reading);
  mustHold(bits / writing >= kUsefulShare && bits / reading >= kUsefulShare, "too many TCK cycles carry no data");
}

void WishboneScene::bytes(Reader& reader) {
  const bool big = plan_.wishbone->isBigEndian;
  QVector<quint32> read;
  QByteArray memory;
  mustHold(reader.write(0x2000, 4, {0x11223344}, error_) && reader.write(0x2001, 1, {0xAA}, error_) &&
               reader.write(0x2002, 2, {0xBBCC}, error_) && reader.read(0x2000, 4, 1, read, error_) &&
               reader.read(0x2003, 1, 1, read, error_) && reader.writeBytes(0x2010, "123456", error_) &&
               reader.readBytes(0x2010, 2, memory, error_),
           "bytes: ", error_);
  mustHold(read == QVector<quint32>({big ? 0x11AABBCCu : 0xBBCCAA44u, big ? 0xCCu : 0xBBu}),
           QString("bytes of a word are mixed up: %1 %2").arg(read[0], 0, 16).arg(read[1], 0, 16));
  mustHold(memory.left(6) == "123456", "the bytes of a file are mixed up");
  expected_.add('w', 0x2000, 0x11223344);
  expected_.add('w', 0x2000, big ? 0x00AA0000 : 0x0000AA00, 2);
  expected_.add('w', 0x2000, big ? 0x0000BBCC : 0xBBCC0000, 12);
  expected_.add('r', 0x2000, 0);
  expected_.add('r', 0x2000, 0, 8);
  expected_.add('w', 0x2010, big ? 0x31323334 : 0x34333231);
  expected_.add('w', 0x2014, big ? 0x35360000 : 0x00003635, 3);
  for (const quint32 address : {0x2010u, 0x2014u}) expected_.add('r', address, 0);
}

void WishboneScene::failures(Reader& reader, Reader& impatient) {
  QVector<quint32> read;
  fails(reader.read(0x3FF8, 4, 4, read, error_), error_, "read from 0x00004000 with an error (err)");
  mustHold(read.size() == 2, "an error loses the words before it");
  fails(reader.write(0xA000, 4, {1}, error_), error_, "16 times to repeat the write to 0x0000a000 (rty)");
  fails(reader.read(0xB000, 4, 1, read, error_), error_, "No slave answered the read from 0x0000b000");
  mustHold(reader.write(0x9000, 4, {7}, error_) && reader.write(0xC000, 4, {1}, error_), "rty, and then ack: ", error_);
  fails(reader.write(0x2000, 4, {2}, error_), error_, "not free for the write to 0x00002000");
  fails(reader.read(0x2002, 4, 1, read, error_), error_, "no multiple of 4");
  fails(reader.read(0xFFFFFFFC, 4, 2, read, error_), error_, "out of range");
  for (const quint32 address : {0x3FF8u, 0x3FFCu}) expected_.add('r', address, 0);
  expected_.add('w', 0x9000, 7);
  expected_.add('w', 0xC000, 1);
  // The clock stands still from here on.
  mustHold(impatient.write(0xD000, 4, {1}, error_) || error_.contains("has not ended"), "", error_);
  fails(impatient.write(0x2000, 4, {3}, error_), error_, "check that");
  expected_.add('w', 0xD000, 1);
}

void WishboneScene::play(double noise, Totals& totals) {
  compile();
  {
    Live live(files_, plan_, noise, 77);
    mustHold(ost::identifyHub(live.hub, plan_, error_), "", error_);
    Reader reader(live.hub, plan_, 100), impatient(live.hub, plan_, 0.5);
    words(live, reader, noise > 0 ? 30 : 1024, noise == 0);
    bytes(reader);
    if (noise == 0) failures(reader, impatient);
    totals.repeats += live.hub.retries();
    need(noise == 0 || live.hub.retries() > 0, "the noise disturbed nothing");
    live.end();
  }
  mustHold(contentsOf(files_.folder + "/bus.txt") == expected_.lines(),
           "the bus has seen other cycles than were asked for (" + files_.folder + "/bus.txt)");
  const QByteArray other = contentsOf(files_.folder + "/other.txt");
  mustHold(other.count("right") > 10 && !other.contains("wrong"), "the other master was disturbed");
  leaveFolder(settings_, files_);
}

}  // namespace

void wishboneMaster(const Settings& settings, Totals& totals) {
  WishboneScene(settings, true).play(0, totals);
  WishboneScene(settings, false).play(kNoise, totals);
}

}  // namespace oracle
