// A state machine over a serial line with a wide shift register: one clock, deeper hierarchy.
module serial_in (input clk, rst, line, output reg [7:0] data, output reg valid);
  reg [2:0] bit_count;
  always @(posedge clk) begin
    data <= rst ? 8'd0 : {data[6:0], line};
    bit_count <= rst ? 3'd0 : bit_count + 3'd1;
    valid <= !rst && bit_count == 3'd7;
  end
endmodule

module control (input clk, rst, line, pause, output reg [1:0] state, output reg [19:0] sum);
  wire [7:0] data;
  wire valid;
  serial_in u_in (.clk(clk), .rst(rst), .line(line), .data(data), .valid(valid));
  wire error = valid && data[7:5] == 3'd3;
  always @(posedge clk)
    if (rst) {state, sum} <= 22'd0;
    else if (!pause) begin
      case (state)
        2'd0: if (valid) state <= 2'd1;
        2'd1: state <= error ? 2'd3 : 2'd2;
        2'd2: if (data[0]) state <= 2'd0;
        default: if (data[2:0] == 3'd0) state <= 2'd0;
      endcase
      if (valid) sum <= sum + {12'd0, data};
    end
endmodule

module steps (input clk, rst, line, pause, output [1:0] state, output [19:0] sum, output reg busy);
  control u_ctl (.clk(clk), .rst(rst), .line(line), .pause(pause), .state(state), .sum(sum));
  reg [31:0] history;
  wire odd = ^history[7:0];
  always @(posedge clk) begin
    busy <= state != 2'd0;
    history <= rst ? 32'd0 : {history[30:0], line ^ busy};
  end
endmodule
