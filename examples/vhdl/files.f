// All that "ost_design read -f files.f" needs to know.
-top pulses
-param WIDTH=5
pulses.v
pulse_meter.vhd
