# Counters in everything that is built. They are atomic, since the client and the simulator run threads.
option(TAVRINE_COVERAGE "Count the lines and branches that run" OFF)
if(TAVRINE_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
