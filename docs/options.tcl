# What each option of a core becomes. Read by tools/write_options.tcl, which refuses a row that names no live option, an
# option without a row, and a row whose test does not exist.
#   option, what it becomes in hardware, what can be changed at run time (- for nothing), tests that would fail

option {trc_option SampleClk} {the net at port `c<i>_clk`: every register of the core but those on TCK} - \
    {sim.oracle}
option {trc_option SampleEnable} {`ostrel_core` HAS_SAMPLE_EN; port `c<i>_sample_en`: only edges at which it is active are samples} - \
    {sim.oracle}
option {trc_option SampleEnableSig} {the net at port `c<i>_sample_en`} - {sim.oracle}
option {trc_option SampleEnablePri} {`ostrel_core` SAMPLE_EN_LOW: an inverter at the sample enable} - \
    {sim.oracle}
option {trc_option BufferDepth} {words of the sample memory: `ostrel_core` POSITION_BITS, ADDRESS_BITS} - \
    {sim.oracle}
option {trc_option Implementation} {`ostrel_core` DISTRIBUTED: `ram_style` of the sample memory} - {sim.oracle}
option {trc_option DistRAMDisable} {no memory of the core is distributed RAM: DISTRIBUTED 0, `ostrel_table` STORE 2 instead of 1} - \
    {sim.oracle}
option {trc_option Timestamp} {`ostrel_core` TIMESTAMP_BITS: a counter of sample clock edges, stored with each sample} - \
    {sim.oracle}
option {trc_option TimestampBits} {`ostrel_core` TIMESTAMP_BITS: width of counter and memory word} - \
    {sim.oracle}
option {trc_option CaptureMode} {`ostrel_core` WINDOWS: a window counter and a lap bit in each word} - \
    {sim.oracle}
option {trc_option MinimumSamplesPerTrigger} {`ostrel_core` POSITION_BITS: samples of a window} \
    {samples before the trigger: `ost_capture`, field *pre*} {sim.oracle}
option {trc_option NumberofTriggers} {`ostrel_core` WINDOWS, WINDOW_BITS: windows of a capture} \
    {fewer windows: field *last window*} {sim.oracle}
option {trc_option IncludeTrigger} {`ostrel_core` INCLUDE_TRIGGER: a bit of each word for each unit} - \
    {sim.oracle}
option {trc_option TriggerEnable} {`ostrel_core` HAS_TRIG_EN; port `c<i>_trig_en`: gates sequences and event counter} - \
    {sim.oracle}
option {trc_option TriggerEnableSig} {the net at port `c<i>_trig_en`} - {sim.oracle}
option {trc_option TriggerEnablePri} {`ostrel_core` TRIG_EN_LOW: an inverter at the trigger enable} - \
    {sim.oracle}

option {trig_option DefaultRadix} {none: `displayRadix` of the capture map, in which vectors are shown; radix of units added without one} \
    {the reader's own choice} {sim.oracle}
option {trig_option EventCounter} {`ostrel_core` EVENT_BITS: a counter of completed expressions} - \
    {sim.oracle}
option {trig_option CounterValue} {`ostrel_core` EVENT_BITS: width of that counter, and its configuration field} \
    {a smaller count: field *event count*} {sim.oracle}
option {trig_option TriggerOut} {port `c<i>_trig_out` and its pulse counter, `ostrel_core` PULSE} - \
    {sim.oracle}
option {trig_option OutNetType} {IO: an output port of the top. NET: a net of the top with `(* keep *)`. BOTH: the port, and the net as `<name>_net`} - \
    {hardware-OutNetType.net hardware-OutNetType.both sim.oracle}
option {trig_option OutNetName} {name of that port or net} - {sim.oracle}
option {trig_option OutNetPri} {`ostrel_core` TRIG_OUT_LOW: an inverter before the output register} - \
    {sim.oracle}
option {trig_option OutNetMPW} {`ostrel_core` PULSE: sample clocks that the output stays active} - \
    {sim.oracle}

option {ost_tu -add_sig} {one more bit of a unit: WIDTH, port `c<i>_trig`} - {hardware-add_sig}
option {ost_tu -del_sig} {bits less of a unit} - {hardware-del_sig}
option {ost_tu -set_sig} {the nets at port `c<i>_trig`, WIDTH of the unit} - {hardware-set_sig sim.oracle}
option {ost_tu -expr} {as -op and -val together; the signals of the unit stay} {as -op and -val} {hardware-expr}
option {ost_tu -op} {class of the unit: `ostrel_match`, `ostrel_order` or `ostrel_serial`} {another operator of the class} \
    {hardware-op}
option {ost_tu -val} {start value of the unit's configuration; length of an `ostrel_serial`} {value and mask} \
    {hardware-val sim.oracle}
option {ost_tu -radix} {none: how the value's digits are read and shown} - {hardware-radix}
option {ost_tu ==} {`ostrel_match` with *invert* 1} {`!=`, `.RE.`, `.FE.`} {sim.oracle}
option {ost_tu !=} {`ostrel_match` with *invert* 0} {`==`, `.RE.`, `.FE.`} {sim.oracle}
option {ost_tu >} {`ostrel_order`: unsigned} {`>=`, `<`, `<=`, `==`, `!=`} {sim.oracle}
option {ost_tu >=} {`ostrel_order`} {`>`, `<`, `<=`, `==`, `!=`} {sim.oracle}
option {ost_tu <} {`ostrel_order`} {`>`, `>=`, `<=`, `==`, `!=`} {sim.oracle}
option {ost_tu <=} {`ostrel_order`} {`>`, `>=`, `<`, `==`, `!=`} {sim.oracle}
option {ost_tu .RE.} {`ostrel_match`: any watched bit rose} {`==`, `!=`, `.FE.`} {sim.oracle}
option {ost_tu .FE.} {`ostrel_match`: any watched bit fell} {`==`, `!=`, `.RE.`} {sim.oracle}
option {ost_tu .SC.} {`ostrel_serial` LENGTH: a shift register over successive samples} {pattern of that length} \
    {sim.oracle}

option {ost_te -ram} {`ostrel_table` STORE: block RAM, or flip-flops (distributed RAM above 4 units)} - {sim.oracle}
option {ost_te -expression} {units at `ostrel_table`: UNITS; steps' truth tables} {any expression over these units within depth and counts} \
    {sim.oracle}
option {ost_te -max_seq_depth} {`ostrel_expression` STEPS, STEP_BITS} {sequences up to it} {sim.oracle}
option {ost_te -max_event_count} {`ostrel_expression` COUNT_BITS: a counter of a step's samples} {counts up to it} \
    {sim.oracle}

option {ost_project -insert_core} {the `ostrel_core` instances of `ostrel_debug`; all cores without it} - {hardware-insert_core}

option {ost_set_wbone_opt PerformConnect} {`true`: the slave that the design marks gets `ostrel_wishbone`'s bus while `wb_grant` is 1; `false`: ports of the top} - \
    {hardware-PerformConnect}
option {ost_set_wbone_opt Endian} {`ostrel_wishbone` BIG_ENDIAN: the order of bytes and lanes between the buffers and the bus} - \
    {hardware-Endian sim.scenes}
option {ost_serdes clk} {port `sd_clk`: the clock of `ostrel_serdes` but for what is on TCK or on a watched clock} - {sim.scenes}
option {ost_serdes rst} {port `sd_rst`: holds changes and counts of levels at 0; without it (VLO) a constant} - {sim.scenes}
