rtl/frame_link.v
rtl/lane.v
rtl/frame_parser.v
rtl/word_fifo.v
rtl/merge.v
rtl/beat_source.v
