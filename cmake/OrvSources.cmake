# Library sources are found by folder, one folder per subsystem, so that adding a
# file needs no edit here. SIMD bodies live in files named for their instruction
# set and are compiled with that set's flags alone:
#   *_sse2.cpp  *_ssse3.cpp  *_sse41.cpp  *_avx2.cpp  *_avx512.cpp
# With ORV_X86_SIMD=OFF those files are left out and only the plain forms remain.
set(ORV_SOURCE_DIRS foundation image colour convert framerate audio file metadata
    platform/os platform/com platform/primitives platform/scaler)

set(ORV_SIMD_FLAGS_sse2 "-msse2")
set(ORV_SIMD_FLAGS_ssse3 "-mssse3")
set(ORV_SIMD_FLAGS_sse41 "-msse4.1")
set(ORV_SIMD_FLAGS_avx2 "-mavx2;-mfma")
set(ORV_SIMD_FLAGS_avx512 "-mavx512f;-mavx512bw;-mavx512vl;-mavx512dq")

function(orv_collect_library_sources target)
  set(sources)
  foreach(dir ${ORV_SOURCE_DIRS})
    file(GLOB_RECURSE found CONFIGURE_DEPENDS
      ${CMAKE_SOURCE_DIR}/${dir}/*.cpp ${CMAKE_SOURCE_DIR}/${dir}/*.h)
    list(APPEND sources ${found})
  endforeach()
  foreach(src ${sources})
    get_filename_component(name ${src} NAME_WE)
    foreach(isa sse2 ssse3 sse41 avx2 avx512)
      if(name MATCHES "_${isa}$")
        if(ORV_X86_SIMD)
          set_source_files_properties(${src} TARGET_DIRECTORY ${target}
            PROPERTIES COMPILE_OPTIONS "${ORV_SIMD_FLAGS_${isa}}")
        else()
          list(REMOVE_ITEM sources ${src})
        endif()
      endif()
    endforeach()
  endforeach()
  target_sources(${target} PRIVATE ${sources})
endfunction()
