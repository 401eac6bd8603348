# Cross-built programs run through CMAKE_CROSSCOMPILING_EMULATOR, one of QEMU's. What a test starts by path, itself again
# for a death test among it, it starts by a wrapper: the kernel needs to know of no emulator.

# tornel_started_by(out_var target): the path by which `target` is started: its own, or that of its wrapper.
function(tornel_started_by out_var target)
  set(path $<TARGET_FILE:${target}>)
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    set(path ${CMAKE_BINARY_DIR}/emulated/${target})
    get_property(made GLOBAL PROPERTY TORNEL_WRAPPER_OF_${target})
    if(NOT made)
      file(GENERATE OUTPUT ${path} CONTENT "#!/bin/sh\nexec ${emulator} -0 \"$0\" $<TARGET_FILE:${target}> \"$@\"\n"
           FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
      set_property(GLOBAL PROPERTY TORNEL_WRAPPER_OF_${target} YES)
    endif()
  endif()
  set(${out_var} ${path} PARENT_SCOPE)
endfunction()
