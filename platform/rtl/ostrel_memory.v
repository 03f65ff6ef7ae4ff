// The memories of the core: one write port and one registered read port, each with its own clock. A word is never read
// while it may be written: samples are read after the run is done, tables are written when there is no run.
`default_nettype none

module ostrel_memory #(
    parameter integer WIDTH = 32,
    parameter integer WORDS = 1024,
    parameter integer ADDRESS_BITS = 10,
    parameter integer DISTRIBUTED = 0
) (
    input  wire                    write_clk,
    input  wire                    write,
    input  wire [ADDRESS_BITS-1:0] write_address,
    input  wire [WIDTH-1:0]        write_data,
    input  wire                    read_clk,
    input  wire                    read,
    input  wire [ADDRESS_BITS-1:0] read_address,
    output reg  [WIDTH-1:0]        read_data
);
  generate
    if (DISTRIBUTED != 0) begin : distributed
      (* ram_style = "distributed" *) reg [WIDTH-1:0] words[0:WORDS-1];
`ifndef SYNTHESIS
      // A read-out block may hold words that were never written; unknown bits in them would spoil a simulated CRC.
      integer i;
      initial for (i = 0; i < WORDS; i = i + 1) words[i] = {WIDTH{1'b0}};
`endif
      always @(posedge write_clk) if (write) words[write_address] <= write_data;
      always @(posedge read_clk) if (read) read_data <= words[read_address];
    end else begin : block
      (* ram_style = "block" *) reg [WIDTH-1:0] words[0:WORDS-1];
`ifndef SYNTHESIS
      // A read-out block may hold words that were never written; unknown bits in them would spoil a simulated CRC.
      integer i;
      initial for (i = 0; i < WORDS; i = i + 1) words[i] = {WIDTH{1'b0}};
`endif
      always @(posedge write_clk) if (write) words[write_address] <= write_data;
      always @(posedge read_clk) if (read) read_data <= words[read_address];
    end
  endgenerate
endmodule

`default_nettype wire
