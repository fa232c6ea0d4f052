# The binaries we ship: the control and the programs in the out folder.
#
# corvan_shipped_binary(<target>) makes <target> one of them. In the Windows
# builds it
#  - links src/common/xp_floor.cpp, which replaces what Windows XP lacks among
#    the imports of the libraries we link statically (an object of the
#    target's own, not a library member: it must be on the link line before
#    the libraries whose imports it takes over);
#  - strips the file after every link, keeping its debug information beside it
#    in <file>.debug for crash analysis (objcopy --only-keep-debug), and
#    names that file in the binary (--add-gnu-debuglink), so gdb and
#    addr2line find it: `gdb CorvanInstaller.ocx` reads CorvanInstaller.ocx.debug.
# Every build does this, the test builds included: the tests run what we ship.
# The target corvan_shipped builds all of them (./run bench measures them).
# Call it where the target is made (CMake runs post-build steps only there).
add_custom_target(corvan_shipped)
function(corvan_shipped_binary target)
  if(NOT WIN32)
    return()
  endif()
  corvan_xp_floor(${target})
  add_dependencies(corvan_shipped ${target})
  set(file $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=${file}.debug ${file}
    COMMENT "Stripping ${target}; its debug information goes to $<TARGET_FILE_NAME:${target}>.debug"
    VERBATIM)
endfunction()

# corvan_xp_floor(<target>): links the replacements of what Windows XP lacks
# (src/common/xp_floor.cpp) into <target>, once.
function(corvan_xp_floor target)
  get_target_property(sources ${target} SOURCES)
  if(NOT WIN32 OR "${sources}" MATCHES "xp_floor\\.cpp")
    return()
  endif()
  target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src/common/xp_floor.cpp)
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src)
endfunction()
