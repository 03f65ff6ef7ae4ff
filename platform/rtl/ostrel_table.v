// The truth tables of one expression: a row for each combination of its units' states, with one bit for each step. As a
// row holds all steps, it can be read before it is known in which step the sequence will be.
`default_nettype none

module ostrel_table #(
    parameter integer UNITS = 1,
    parameter integer STEPS = 1,
    parameter integer STORE = 0,      // 0 configuration bits, 1 distributed RAM, 2 block RAM
    parameter integer CHAIN_BITS = 2  // STEPS << UNITS with STORE = 0, else 1.
) (
    input  wire                  clk,
    input  wire                  run,          // A memory is read in runs only, and written only between them.
    input  wire [UNITS-1:0]      hits,
    output wire [STEPS-1:0]      row,          // One clock after hits.
    input  wire [CHAIN_BITS-1:0] config_bits,  // With STORE = 0: row after row; constant during a run.
    // Otherwise: written on TCK.
    input  wire                  tck,
    input  wire                  write,
    input  wire [UNITS-1:0]      write_address,
    input  wire [STEPS-1:0]      write_row
);
  generate
    if (STORE == 0) begin : chain
      reg [STEPS-1:0] row_q;
      integer i;
      // One bit wider than hits, so that it can hold the loop's end.
      reg [UNITS:0] number;
      reg [STEPS-1:0] selected;
      always @* begin
        selected = {STEPS{1'b0}};
        number = {(UNITS+1){1'b0}};
        for (i = 0; i < (1 << UNITS); i = i + 1) begin
          if (number[UNITS-1:0] == hits) selected = selected | config_bits[i*STEPS+:STEPS];
          number = number + 1'b1;
        end
      end
      always @(posedge clk) row_q <= selected;
      assign row = row_q;
      wire unused = &{1'b0, tck, write, write_address, write_row, run};
    end else begin : memory
      ostrel_memory #(
          .WIDTH(STEPS), .WORDS(1 << UNITS), .ADDRESS_BITS(UNITS), .DISTRIBUTED(STORE == 1 ? 1 : 0)
      ) rows (
          .write_clk(tck), .write(write), .write_address(write_address), .write_data(write_row),
          .read_clk(clk), .read(run), .read_address(hits), .read_data(row)
      );
      wire unused = &{1'b0, config_bits};
    end
  endgenerate
endmodule

`default_nettype wire
