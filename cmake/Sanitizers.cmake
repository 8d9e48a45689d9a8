# The whole build, third-party headers included, under one set of sanitizers.
if(TAVRINE_SANITIZE)
  add_compile_options(-fsanitize=${TAVRINE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVRINE_SANITIZE})
endif()
