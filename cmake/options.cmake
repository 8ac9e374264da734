include(CheckLinkerFlag)

# Warnings that are worth reading. The presets of the checks make them errors.
function(orx_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    -Wcast-align -Wformat=2 -Wundef -Wvla
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
    # GCC 12 reports overlaps in sums of strings where there are none.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)
endfunction()

# Adds the options that the linker knows.
function(orx_link_options_if_known target)
  foreach(option ${ARGN})
    string(MAKE_C_IDENTIFIER "ORX_LINKER_KNOWS${option}" known)
    check_linker_flag(CXX ${option} ${known})
    if(${known})
      target_link_options(${target} PRIVATE ${option})
    endif()
  endforeach()
endfunction()
