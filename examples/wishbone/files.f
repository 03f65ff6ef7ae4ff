rtl/beat.v
rtl/bus.v
rtl/memory.v
rtl/pwm.v
rtl/pwm_system.v
