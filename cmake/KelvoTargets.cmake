# What every target of the house shares.
add_library(kelvo_options INTERFACE)
target_compile_options(kelvo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wcast-qual -Wimplicit-fallthrough)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps that are not there in the string concatenations of its own library (GCC bug 105651), and when
  # these have been precompiled overflows and bounds as well. Clang's warnings of the same names stay on.
  target_compile_options(kelvo_options INTERFACE
    -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds)
endif()
# Visible functions may be inlined and called directly within the house all the same: nobody replaces them from outside.
target_compile_options(kelvo_options INTERFACE -fno-semantic-interposition)
if(KELVO_WERROR)
  target_compile_options(kelvo_options INTERFACE -Werror)
endif()
if(KELVO_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  add_compile_definitions(KELVO_SANITIZED=1)
endif()
if(KELVO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Libraries of others that are each for the floors that say so (USES), by the headers that tell them.
set(kelvoFencedLibraries ICU CapnProto Expat Iconv Highway Seccomp)
set(kelvoFencedICU "unicode/*.h")
set(kelvoFencedCapnProto "capnp/*.h" "kj/*.h")
set(kelvoFencedExpat "expat.h")
set(kelvoFencedIconv "iconv.h")
set(kelvoFencedHighway "hwy/*.h")
set(kelvoFencedSeccomp "seccomp.h" "seccomp-syscalls.h")

# Headers of the system are found by every compiler, whatever a link line says. For each fenced library there is a
# folder of headers that go by the same names and do not compile; it stands first in the include path of each floor
# that may not use the library.
function(kelvo_make_fences)
  foreach(library IN LISTS kelvoFencedLibraries)
    foreach(pattern IN LISTS kelvoFenced${library})
      file(GLOB headers RELATIVE /usr/include /usr/include/${pattern})
      foreach(header IN LISTS headers)
        file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/fences/${library}/${header}
          CONTENT "#error \"<${header}> is not for this floor: its link line says nothing of ${library}\"\n")
      endforeach()
    endforeach()
  endforeach()
endfunction()
kelvo_make_fences()

# What is tested is optimised as it is delivered; the tests themselves are compiled more often than they are run.
set(kelvoTestOptions $<$<CONFIG:Release>:-O1>)

# kelvo_precompile(<target> <name> <header>...): has the target take these headers as compiled once for all targets that
# name the same. They have the same flags otherwise: what a library adds to them is a reason to do without.
function(kelvo_precompile target name)
  if(NOT KELVO_PRECOMPILE)
    return()
  endif()
  if(NOT TARGET kelvo_precompiled_${name})
    # Programs are compiled with -fPIE and libraries with -fPIC, which do not mix.
    set(source ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      file(CONFIGURE OUTPUT ${source} CONTENT "int main() {}\n")
      add_executable(kelvo_precompiled_${name} EXCLUDE_FROM_ALL ${source})
      target_link_libraries(kelvo_precompiled_${name} PRIVATE GTest::gtest)
      target_compile_options(kelvo_precompiled_${name} PRIVATE ${kelvoTestOptions})
    else()
      file(CONFIGURE OUTPUT ${source} CONTENT "")
      add_library(kelvo_precompiled_${name} OBJECT ${source})
    endif()
    target_include_directories(kelvo_precompiled_${name} PRIVATE
      ${CMAKE_BINARY_DIR}/floors/foundation ${CMAKE_BINARY_DIR}/floors/units)
    target_link_libraries(kelvo_precompiled_${name} PRIVATE kelvo_options)
    target_precompile_headers(kelvo_precompiled_${name} PRIVATE ${ARGN})
  endif()
  target_precompile_headers(${target} REUSE_FROM kelvo_precompiled_${name})
endfunction()

# kelvo_stage_headers(<folder> <name> [<above>]): makes floors/<name> in the build folder an include path in which the
# folder's own headers are found, by its path below src/, or whatever folder stands above it, and nothing else.
function(kelvo_stage_headers folder name)
  set(above ${CMAKE_SOURCE_DIR}/src)
  if(ARGC GREATER 2)
    set(above ${ARGV2})
  endif()
  file(GLOB headers CONFIGURE_DEPENDS ${above}/${folder}/*.h)
  set(stage ${CMAKE_BINARY_DIR}/floors/${name}/${folder})
  file(REMOVE_RECURSE ${CMAKE_BINARY_DIR}/floors/${name})
  file(MAKE_DIRECTORY ${stage})
  foreach(header IN LISTS headers)
    get_filename_component(file ${header} NAME)
    file(CREATE_LINK ${header} ${stage}/${file} SYMBOLIC)
  endforeach()
endfunction()

# kelvo_floor(<folder below src/> [NAME name] [FLOORS target...] [LIBRARIES target...] [USES fenced library...]
#             [FOREIGN_FLAGS])
#
# One folder of src/ as a static library kelvo_<name>, by default the last part of the folder. Its headers are
# reachable as "<folder>/Name.h", and only by targets that name it in FLOORS: each floor's include path holds nothing
# but links to its own headers, so that an arrow that the link line does not state does not compile. FOREIGN_FLAGS: a
# library adds compiler flags of its own.
function(kelvo_floor folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "FOREIGN_FLAGS" "NAME" "FLOORS;LIBRARIES;USES")
  if(NOT arg_NAME)
    get_filename_component(arg_NAME ${folder} NAME)
  endif()
  set(target kelvo_${arg_NAME})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${folder}/*.cpp)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${folder}/*.h)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")

  kelvo_stage_headers(${folder} ${arg_NAME})
  add_library(${target} STATIC ${sources} ${headers})
  target_include_directories(${target} PUBLIC ${CMAKE_BINARY_DIR}/floors/${arg_NAME})
  foreach(library IN LISTS kelvoFencedLibraries)
    if(NOT library IN_LIST arg_USES)
      target_include_directories(${target} BEFORE PRIVATE ${CMAKE_BINARY_DIR}/fences/${library})
    endif()
  endforeach()
  target_link_libraries(${target} PUBLIC ${arg_FLOORS} PRIVATE kelvo_options ${arg_LIBRARIES})
  if(arg_FLOORS AND NOT arg_FOREIGN_FLAGS)
    kelvo_precompile(${target} values [["platform/foundation/Value.h"]]
      <algorithm> <functional> <optional> <string> <unordered_map> <vector>)
  endif()
endfunction()

# kelvo_engine(<program> <floor>): main.cpp of this folder as the program of an engine, which stands beside the service
# where that is installed. What it is made of is in the floor, for its tests as well.
function(kelvo_engine program floor)
  add_executable(${program} main.cpp $<TARGET_OBJECTS:kelvo_engine_allocations>)
  target_link_libraries(${program} PRIVATE kelvo_options ${floor} kelvo_engine_program)
  install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/plumwick)
endfunction()

# kelvo_importer(<folder below importers/> <Name> [FLOORS target...] [LIBRARIES target...])
#
# A metadata importer of our own: the folder's sources as a library kelvo_<folder>_importer, for its tests as well, and
# Plugin.cpp, which holds the factory, with Info.plist as a bundle among the system's importers, beside the service.
function(kelvo_importer folder name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "FLOORS;LIBRARIES")
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/importers/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/Plugin\\.cpp$")
  set(library kelvo_${folder}_importer)
  kelvo_stage_headers(importers/${folder} importer_${folder} ${CMAKE_SOURCE_DIR})
  add_library(${library} STATIC ${sources})
  target_include_directories(${library} PUBLIC ${CMAKE_BINARY_DIR}/floors/importer_${folder})
  target_link_libraries(${library} PUBLIC kelvo_importer_support ${arg_FLOORS}
    PRIVATE kelvo_options ${arg_LIBRARIES})

  set(bundle System/Library/Spotlight/${name}.mdimporter)
  add_library(importer_${folder} MODULE ${CMAKE_SOURCE_DIR}/importers/${folder}/Plugin.cpp)
  target_link_libraries(importer_${folder} PRIVATE kelvo_options ${library})
  set_target_properties(importer_${folder} PROPERTIES PREFIX "" OUTPUT_NAME ${name}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${bundle}/Contents/Linux)
  configure_file(${CMAKE_SOURCE_DIR}/importers/${folder}/Info.plist
    ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${bundle}/Contents/Info.plist COPYONLY)
  add_dependencies(importers importer_${folder})
  install(TARGETS importer_${folder}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/plumwick/${bundle}/Contents/Linux)
  install(FILES ${CMAKE_SOURCE_DIR}/importers/${folder}/Info.plist
    DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/plumwick/${bundle}/Contents)
endfunction()

# kelvo_tests(<folder below tests/> LINK target... [ENVIRONMENT name=value...] [FOREIGN_FLAGS])
#
# One test program per folder, its cases found by ctest one by one.
function(kelvo_tests folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "FOREIGN_FLAGS" "" "LINK;ENVIRONMENT")
  string(REPLACE "/" "_" name ${folder})
  set(target ${name}_tests)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${folder}/*Test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${target} PRIVATE kelvo_options ${arg_LINK} GTest::gtest GTest::gtest_main)
  target_compile_options(${target} PRIVATE ${kelvoTestOptions})
  if(NOT arg_FOREIGN_FLAGS)
    kelvo_precompile(${target} tests [["platform/foundation/Value.h"]]
      <gtest/gtest.h> <algorithm> <filesystem> <fstream> <functional> <string> <thread> <vector>)
  endif()
  include(GoogleTest)
  gtest_discover_tests(${target} TEST_PREFIX "${folder}: " DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 ENVIRONMENT "${arg_ENVIRONMENT}")
endfunction()

# kelvo_bench(<stem> LINK target...): bench/<stem>.cpp becomes bin/bench_<stem>.
function(kelvo_bench stem)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  add_executable(bench_${stem} ${CMAKE_SOURCE_DIR}/bench/${stem}.cpp)
  target_link_libraries(bench_${stem} PRIVATE kelvo_options ${arg_LINK} benchmark::benchmark)
endfunction()

# kelvo_fuzz(<Stem> LINK target...): fuzz/<Stem>Fuzzer.cpp becomes bin/fuzz_<Stem>.
function(kelvo_fuzz stem)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  add_executable(fuzz_${stem} ${CMAKE_SOURCE_DIR}/fuzz/${stem}Fuzzer.cpp)
  target_include_directories(fuzz_${stem} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(fuzz_${stem} PRIVATE kelvo_options ${arg_LINK})
  target_link_options(fuzz_${stem} PRIVATE -fsanitize=fuzzer)
  add_dependencies(fuzzers fuzz_${stem})
endfunction()
