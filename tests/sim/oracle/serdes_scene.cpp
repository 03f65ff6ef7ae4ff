// A block whose levels and clocks the bench moves at fixed cycles of TCK, and what the serdes core says of it then.
#include "platform/reader/serdes_reader.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

/// What happens, happens at the begin of a phase; the looks are behind it.
constexpr int kPhase = 40000, kLookAt = 8000;

const char kScript[] = R"(package require ost_platform
package require ost_tclwrapper
ost_design read -top serdes {%1/tests/sim/designs/serdes.v}
ost_project new -overwrite oracle.ost
ost_core add_serdes
ost_serdes set clk=clk rst=rst
ost_project run -save
)";

/// A reset of a period and a half falls between the rounds; a glitch is a little longer than a sample clock.
const char kBench[] = R"(`timescale 1ns / 1ps
module tb;
  wire tck, tms, tdi, tdo, trst, srst;
  reg clk = 0, rst = 0, lock = 1, los = 0, rx = 0, tx = 0, stopped = 0;
  reg [1:0] fault = 2'bxz;
  integer cycles = 0;
  always @(posedge tck) cycles = cycles + 1;
  always #5 if (!stopped) clk = ~clk;
  always #4 rx = ~rx;
  always #12.5 if (cycles < 2 * 40000) tx = ~tx;
  task drop(input integer times);
    repeat (times) begin
      #33.7 lock = 0;
      #41.3 lock = 1;
    end
  endtask
  initial begin
    #1000 fault = 0;
    wait (cycles >= 1 * 40000);
    drop(3);
    #400 los = 1;
    #11 los = 0;
    repeat (50) begin
      #11.9 fault[1] = 1;
      #12.1 fault[1] = 0;
    end
    wait (cycles >= 3 * 40000) rst = 1;
    #500 drop(2);
    wait (cycles >= 4 * 40000) rst = 0;
    #500 drop(2);
    #9000 rst = 1;
    #15 rst = 0;
    #9000 fault[0] = 1;
    #30 fault[0] = 0;
    wait (cycles >= 5 * 40000);
    repeat (17000) begin
      #10.1 fault[0] = 1;
      #10.1 fault[0] = 0;
    end
    wait (cycles >= 7 * 40000);
    drop(1);
    #500 stopped = 1;
    wait (cycles >= 9 * 40000) stopped = 0;
  end
  serdes dut (.clk(clk), .rst(rst), .lock(lock), .los(los), .fault(fault), .recovered(rx), .sent(tx), .busy(),
              .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(tdi), .ostrel_tdo(tdo));
  ostrel_jtag_sim #(.HALF_PERIOD(6)) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(trst), .srst(srst));
endmodule
)";

/// "lock 1* 3": the level, whether it changed, the rises.
QString shown(const ost::PlanSerdes& plan, const ost::SerdesLook& look) {
  QStringList parts;
  for (int i = 0; i < look.levels.size(); ++i) {
    const ost::SerdesLevel& one = look.levels[i];
    parts += QString("%1 %2%3 %4")
                 .arg(plan.levels[i].net.name.section('/', -1), QString::number(one.level), one.changed ? "*" : "",
                      one.rises.isFull ? "many" : QString::number(one.rises.count));
  }
  return parts.join(", ") + (look.inReset ? ", in reset" : "");
}

void checkRate(const ost::SerdesLook& look, const ost::SerdesCount& clock, double rate, const QString& where) {
  mustHold(qAbs(look.rate(clock) - rate) <= 1.01 * look.rateError(),
           QString("%1: %2 instead of %3").arg(where).arg(look.rate(clock)).arg(rate));
}

class SerdesScene {
 public:
  SerdesScene(const BenchFiles& files, const ost::InsertPlan& plan, double noise, const QStringList& arguments = {})
      : live_(files, plan, noise, 7, arguments), reader_(live_.hub, plan), plan_(plan) {
    QString error;
    mustHold(live_.reader.identify(error), error);
  }

  /// A look in a phase, and what it must show of the levels.
  void look(int phase, const QString& levels, bool restart = false, bool sent = false) {
    goTo(phase);
    ost::SerdesLook look;
    QString error;
    const QString where = QString("phase %1").arg(phase);
    mustHold(reader_.read(restart, look, error), where + ": ", error);
    const QString found = shown(*plan_.serdes, look);
    mustHold(found == levels, where + ": " + found + " instead of " + levels);
    checkRate(look, look.clocks[0], 1.25, where + ", recovered clock");
    checkRate(look, look.clocks[1], sent ? 0.4 : 0, where + ", sent clock");
    sampleClocks_ = look.sampleClocks;
    if (tckRate_ > 0) checkRate(look, look.tck, tckRate_, where + ", TCK");
  }
  void fails(int phase, const QString& text) {
    goTo(phase);
    ost::SerdesLook look;
    QString error;
    mustHold(!reader_.read(false, look, error) && error.contains(text), "no failure: ", error);
  }
  void end() { live_.end(); }
  qint64 sampleClocks() const { return sampleClocks_; }
  void expectTck(double rate) { tckRate_ = rate; }

 private:
  void goTo(int phase) {
    QString error;
    const qint64 wait = qint64(phase) * kPhase + kLookAt - live_.hub.cycles();
    need(wait <= 0 || live_.hub.idle(int(wait), error), error);
  }

  Live live_;
  ost::SerdesReader reader_;
  const ost::InsertPlan& plan_;
  qint64 sampleClocks_ = 0;
  double tckRate_ = 0;
};

const char kQuiet[] = "lock 1 0, ready 1 0, rx_fault[1] 0 0, rx_fault[0] 0 0, rx_los 0 0";

void play(SerdesScene& scene) {
  const QString quiet = kQuiet;
  const QString counted = "lock 1 3, ready 1 4, rx_fault[1] 0 50, rx_fault[0] 0 0, rx_los 0 1";
  scene.look(0, quiet, false, true);
  scene.look(1, "lock 1* 3, ready 1* 4, rx_fault[1] 0* 50, rx_fault[0] 0 0, rx_los 0* 1", false, true);
  scene.look(1, counted, false, true);
  scene.look(2, counted, true);
  scene.look(2, quiet);
  scene.look(3, quiet + ", in reset");
  scene.look(4, "lock 1 0, ready 1 0, rx_fault[1] 0 0, rx_fault[0] 0* 1, rx_los 0 0");
  scene.look(6, "lock 1 0, ready 1 0, rx_fault[1] 0 0, rx_fault[0] 0* many, rx_los 0 0");
  scene.fails(7, "\"clk\" of the serdes core is not running");
  // The look that failed was taken as soon as the clock was back; counts stay.
  scene.look(9, "lock 1 1, ready 1 1, rx_fault[1] 0 0, rx_fault[0] 0 many, rx_los 0 0");
  scene.end();
}

}  // namespace

void serdesBlock(const Settings& settings) {
  const BenchFiles files = prepareFolder(settings, "serdes", QStringList("tests/sim/designs/serdes.v"));
  const ost::InsertPlan plan = insertScript(QString(kScript).arg(settings.sources), settings, files);
  compileText(kBench, plan, settings, files);
  SerdesScene quiet(files, plan, 0);
  quiet.expectTck(10.0 / 12);
  play(quiet);
  // Whatever is sent again, nothing is counted twice or lost.
  SerdesScene noisy(files, plan, 1e-3);
  play(noisy);
  // Twenty sample clocks in a TCK: the counts of clocks are at their end before the look, all at once.
  SerdesScene slow(files, plan, 0, {"+ostrel_half_period=100"});
  slow.look(0, kQuiet, false, true);
  slow.end();
  const qint64 most = qint64(plan.serdes->rows()) << ost::kSerdesCountBits;
  mustHold(slow.sampleClocks() > most - most / 100, "the rounds were not all counted");
  leaveFolder(settings, files);
}

}  // namespace oracle
