# Instrumentation applies to everything that is built, so that the library and its tests agree.
if(ORVABASE_SANITIZE)
    add_compile_options(-fsanitize=${ORVABASE_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer -O1)
    add_link_options(-fsanitize=${ORVABASE_SANITIZE})
endif()

if(ORVABASE_COVERAGE)
    add_compile_options(--coverage -O0 -fprofile-update=atomic)
    add_link_options(--coverage)
endif()

# Valgrind runs what any compiler made; a little optimisation halves its time and keeps the lines that it reports.
if(ORVABASE_MEMCHECK)
    add_compile_options(-O1 -fno-omit-frame-pointer)
endif()
