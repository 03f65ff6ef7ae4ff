// What cells of a synthesis are in terms of Verilog's operators. Sums stay sums, so that a later synthesis finds its
// carry chains again.
#include "platform/design/mapped_cells.h"

#include <algorithm>

#include "platform/design/name_index.h"

namespace ost {
namespace {

/// The ports and parameters are those of Yosys' cells; techmap replaces cells by modules of the same names. A carry out
/// of a sum follows from its bits: both operands have it, or one has it and the sum's bit went to 0.
const char kCells[] = R"(
module \$alu (A, B, CI, BI, X, Y, CO);
  parameter A_SIGNED = 0, B_SIGNED = 0, A_WIDTH = 1, B_WIDTH = 1, Y_WIDTH = 1;
  parameter _TECHMAP_CONSTMSK_CI_ = 0, _TECHMAP_CONSTVAL_CI_ = 0, _TECHMAP_CONSTMSK_BI_ = 0, _TECHMAP_CONSTVAL_BI_ = 0;
  input [A_WIDTH-1:0] A;
  input [B_WIDTH-1:0] B;
  input CI, BI;
  output [Y_WIDTH-1:0] X, Y, CO;
  wire [Y_WIDTH-1:0] a, b, c = BI ? ~b : b;
  generate
    if (A_SIGNED && B_SIGNED) assign a = $signed(A), b = $signed(B);
    else assign a = A, b = B;
    if (_TECHMAP_CONSTMSK_CI_ && !_TECHMAP_CONSTVAL_CI_) assign Y = a + c;
    else if (_TECHMAP_CONSTMSK_CI_ && _TECHMAP_CONSTMSK_BI_ && _TECHMAP_CONSTVAL_BI_) assign Y = a - b;
    else assign Y = a + c + CI;
  endgenerate
  assign X = a ^ c, CO = (a & c) | ((a | c) & ~Y);
endmodule
module \$lcu (P, G, CI, CO);
  parameter WIDTH = 1;
  input [WIDTH-1:0] P, G;
  input CI;
  output [WIDTH-1:0] CO;
  wire [WIDTH-1:0] a = P | G, sum = a + G + CI;
  assign CO = G | (a & ~sum);
endmodule
module \$fa (A, B, C, X, Y);
  parameter WIDTH = 1;
  input [WIDTH-1:0] A, B, C;
  output [WIDTH-1:0] X, Y;
  assign Y = A ^ B ^ C, X = (A & B) | (A & C) | (B & C);
endmodule
module \$sop (A, Y);
  parameter WIDTH = 0, DEPTH = 0, TABLE = 0;
  localparam [2*WIDTH*DEPTH-1:0] BITS = TABLE;
  input [WIDTH-1:0] A;
  output Y;
  wire [DEPTH-1:0] products;
  genvar i, k;
  generate
    for (i = 0; i < DEPTH; i = i + 1) begin : product
      wire [WIDTH-1:0] holds;
      for (k = 0; k < WIDTH; k = k + 1) begin : literal
        assign holds[k] = A[k] ? !BITS[2*(i*WIDTH+k)] : !BITS[2*(i*WIDTH+k)+1];
      end
      assign products[i] = &holds;
    end
  endgenerate
  assign Y = |products;
endmodule
module \$_BUF_ (input A, output Y);
  assign Y = A;
endmodule
module \$_TBUF_ (input A, E, output Y);
  assign Y = E ? A : 1'bz;
endmodule
module \$_MUX4_ (input A, B, C, D, S, T, output Y);
  assign Y = T ? (S ? D : C) : (S ? B : A);
endmodule
module \$_MUX8_ (input A, B, C, D, E, F, G, H, S, T, U, output Y);
  assign Y = U ? (T ? (S ? H : G) : (S ? F : E)) : (T ? (S ? D : C) : (S ? B : A));
endmodule
module \$_MUX16_ (input A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, S, T, U, V, output Y);
  wire [15:0] all = {P, O, N, M, L, K, J, I, H, G, F, E, D, C, B, A};
  assign Y = all[{V, U, T, S}];
endmodule
)";

}  // namespace

bool isRawCell(const QByteArray& type) {
  return type == "$macc" || (type.startsWith('$') && QByteArray(kCells).contains("module \\" + type + " ("));
}

YosysScript plainCellsScript(const YosysScript& hierarchy, bool isNetlist, const QList<QByteArray>& boxes) {
  YosysScript script;
  script.line("read_verilog -nodpi").text(QByteArray(kCells).split('\n')).line("design -stash ost_cells");
  script.append(hierarchy);
  // In JSON an inout and what it is assigned from are one net, as they are for `proc`; a buffer keeps them apart. Of a
  // netlist that came as JSON nobody knows any more which follows which.
  if (!isNetlist)
    script.line(
        "select -set ost_instances t:* t:$* %d t:$paramod* %u\nselect -set ost_pads i:* o:* %i\n"
        "select -set ost_pads @ost_pads @ost_instances %co1 w:* %i\ninsbuf @ost_pads\nsetattr -set keep 1 t:$_BUF_");
  // The steps of `proc`. Ahead of a latch its search for one would make an ordinary driver of a tri-state.
  script.line(
      "proc_clean\nproc_rmdead\nproc_prune\nproc_init\nproc_arst\nproc_rom\nproc_mux\ntribuf\n"
      "proc_dlatch\nproc_dff\nproc_memwr\nproc_clean");
  // Verilog has no buffer but "+", which makes an x of a z: what may float is connected as before.
  if (!isNetlist)
    script.line(
        "select -set ost_floats t:$mux t:$pmux t:$bmux t:$tribuf t:$_MUX_ t:$_TBUF_ @ost_instances %co1 i:* w:* %i\n"
        "select -set ost_floats @ost_floats %co1 w:* %i %co1 w:* %i %co1 w:* %i\n"
        "techmap -map %ost_cells @ost_floats %co1 t:$_BUF_ %i\n"
        "setparam -type $pos -set A_SIGNED 0 -set A_WIDTH 1 -set Y_WIDTH 1 t:$_BUF_");
  // Not before: what has become a constant z is driven by no cell that is known to float.
  script.line("opt_expr -keepdc");
  // A clocked read port becomes a read without a clock and a register, as sources have them.
  script.line("memory_unpack\nmemory_nordff\nmaccmap -unmap t:$macc");
  // The nets of a replaced cell take its name, and would be public ones.
  script.line(
      "select -set ost_raw t:$alu t:$lcu t:$fa t:$sop t:$_BUF_ t:$_TBUF_ t:$_MUX4_ t:$_MUX8_ t:$_MUX16_\n"
      "rename -hide @ost_raw\ntechmap -map %ost_cells t:$alu t:$lcu t:$fa t:$sop t:$_BUF_ t:$_TBUF_ t:$_MUX4_"
      " t:$_MUX8_ t:$_MUX16_");
  script.line(
      "select -set ost_registers t:$dff* t:$adff* t:$sdff* t:$aldff* t:$dlatch* t:$adlatch* t:$sr"
      " t:$_DFF* t:$_SDFF* t:$_ALDFF* t:$_DLATCH* t:$_SR_*");
  script.line("select -set ost_unnamed @ost_registers %co1:+[Q] w:$* %i");
  if (!boxes.isEmpty()) {
    script.line("select -set ost_boxes");
    for (const QByteArray& box : boxes) script.cellsOfType(yosysId(box));
    script.line("select -set ost_unnamed @ost_unnamed @ost_boxes");
  }
  return script.line("rename -enumerate -pattern unnamed$% @ost_unnamed");
}

bool isGivenName(const QByteArray& name) {
  static const QByteArray start = "unnamed$";
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return name.startsWith(start) && std::all_of(name.begin() + start.size(), name.end(), isDigit);
}

}  // namespace ost
