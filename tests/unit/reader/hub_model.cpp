#include "tests/unit/reader/hub_model.h"

#include "platform/reader/hub_frame.h"

namespace ost {
namespace {

enum State {
  Reset,
  Idle,
  SelDr,
  CapDr,
  ShDr,
  Ex1Dr,
  PauDr,
  Ex2Dr,
  UpDr,
  SelIr,
  CapIr,
  ShIr,
  Ex1Ir,
  PauIr,
  Ex2Ir,
  UpIr
};
const int kNext[16][2] = {{Idle, Reset},  {Idle, SelDr},  {CapDr, SelIr}, {ShDr, Ex1Dr},  {ShDr, Ex1Dr}, {PauDr, UpDr},
                          {PauDr, Ex2Dr}, {ShDr, UpDr},   {Idle, SelDr},  {CapIr, Reset}, {ShIr, Ex1Ir}, {ShIr, Ex1Ir},
                          {PauIr, UpIr},  {PauIr, Ex2Ir}, {ShIr, UpIr},   {Idle, SelDr}};

}  // namespace

HubModel::HubModel(const InsertPlan& plan) : hash(plan.projectHash.toULongLong(nullptr, 16)) {
  for (const PlanCore& core : plan.cores) cores.emplace_back(core);
  countedCores_ = plan.cores.size();
}

bool HubModel::run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString&) {
  for (int i = 0; i < tms.size(); ++i) {
    if (tdo) *tdo += static_cast<char>(tdo_);
    clock(tms[i], tdi[i]);
  }
  return true;
}

void HubModel::clock(bool tms, bool tdi) {
  ++cycles_;
  const bool user = ir_ == 2;
  if (state_ == ShIr) irShift_ = (irShift_ >> 1) | (tdi << 3);
  if (state_ == ShDr && user) {
    if (writing_) frame_ += static_cast<char>(tdi);
    writing_ = writing_ || tdi;
    ++replyAt_;
  }
  state_ = kNext[state_][tms];
  if (state_ == Reset) ir_ = 1;
  if (state_ == ShIr || state_ == CapIr) irShift_ = state_ == CapIr ? 5 : irShift_;
  if (state_ == UpIr) ir_ = irShift_;
  if (state_ == CapDr && user) {
    writing_ = false;
    frame_.clear();
    reply_ = block(int(bitsNumber(command_, 20, 20)));
    replyAt_ = 0;
  }
  if (state_ == UpDr && user && writing_) update();
  if (state_ == ShIr) tdo_ = irShift_ & 1;
  if (state_ == ShDr && user) {
    if (replyAt_ >= reply_.size()) {
      reply_ = block(nextAddress_);
      replyAt_ = 0;
    }
    tdo_ = !writing_ && good_ && reply_[replyAt_];
  }
}

bool HubModel::isDone(const ModelCore& core) const {
  return core.armed && core.clockRuns && core.cyclesToDone >= 0 && cycles_ - core.armedAt >= core.cyclesToDone;
}

void HubModel::update() {
  good_ = frame_.size() >= 72 && frameCrc(frame_) == 0xC704DD7Bu;
  const QByteArray head = frame_.left(40);
  if (good_) {
    command_ = head;
    payload_ = frame_.mid(72);
    execute();
  } else if (frame_.size() > 72) {
    const int op = int(bitsNumber(head, 0, 4)), core = int(bitsNumber(head, 4, 8));
    if ((op == 3 || op == 4) && core < int(cores.size())) cores[core].configured = false;
  }
}

void HubModel::execute() {
  const HubOp op = HubOp(bitsNumber(command_, 0, 4));
  const int index = int(bitsNumber(command_, 4, 8)), tag = int(bitsNumber(command_, 12, 8));
  refused_ = index >= int(cores.size());
  if (refused_) return;
  ModelCore& core = cores[index];
  if (op == HubOp::Status) core.fresh = core.clockRuns;
  if (op == HubOp::Read) refused_ = !isDone(core) || tag != core.tag;
  if (op == HubOp::Config) {
    refused_ = core.armed;
    core.configured = !refused_;
    core.chain = payload_;
    core.tables.clear();
  }
  if (op == HubOp::Table) {
    refused_ = core.armed || !core.configured;
    core.tables += payload_;
  }
  if (op == HubOp::Arm) {
    refused_ = core.armed || !core.configured;
    if (refused_) return;
    core.armed = true;
    core.tag = tag;
    core.armedAt = cycles_;
    ++core.arms;
  }
  if (op == HubOp::Stop && core.clockRuns) core.armed = false;
}

QByteArray HubModel::block(int address) {
  const HubOp op = HubOp(bitsNumber(command_, 0, 4));
  const int index = int(bitsNumber(command_, 4, 8));
  QByteArray echo = command_, flags(8, 0), payload(1, 0);
  flags[7] = 1;
  flags[5] = refused_;
  if (index < int(cores.size())) {
    ModelCore& core = cores[index];
    const ReadLayout& layout = core.layout;
    flags[0] = !core.armed;
    flags[1] = core.armed;
    flags[2] = isDone(core);
    flags[3] = core.configured;
    flags[4] = core.fresh;
    payload = numberBits(core.tag, 8) + core.statusTail;
    if (op == HubOp::Info)
      payload = numberBits(0x52545350, 32) + numberBits(version, 16) + numberBits(countedCores_, 16) +
                numberBits(hash, 64) + numberBits(1, 8) + numberBits(layout.addressBits, 8) +
                numberBits(layout.wordBits, 16) + numberBits(bitsHolding(layout.blockWords), 8) +
                numberBits(core.plan.timestampBits, 8) + numberBits(core.plan.probeWidth(), 16) +
                numberBits(layout.chainBits, 32) + numberBits(layout.statusBits, 16) +
                numberBits(core.plan.units.size(), 8) + numberBits(core.plan.expressions.size(), 8);
    if (op == HubOp::Table) {
      // The address register has counted the rows, and one row is sent in place of a status word.
      echo = command_.left(20) + numberBits(bitsNumber(command_, 20, 20) + 1, 20);
      payload = QByteArray(core.plan.expressions[int(bitsNumber(command_, 12, 8))].maxSequenceDepth, 0);
    }
    if (op == HubOp::Read && !refused_) {
      echo = command_.left(20) + numberBits(address, 20);
      payload.clear();
      do payload += core.words[address++ % layout.words];
      while (address % layout.blockWords);
      nextAddress_ = address % layout.words;
    }
  }
  const QByteArray checked = echo + flags + payload;
  const quint32 crc = frameCrc(checked);
  QByteArray check;
  for (int i = 31; i >= 0; --i) check += static_cast<char>(crc >> i & 1);
  return checked + check;
}

}  // namespace ost
