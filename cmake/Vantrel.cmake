# What every target of the project shares, and one helper for each kind of target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

add_library(vantrel_common INTERFACE)
target_compile_definitions(vantrel_common INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_CAST_TO_ASCII
    QT_NO_FOREACH
    QT_NO_KEYWORDS
    QT_STRICT_ITERATORS
    VANTREL_VERSION="${PROJECT_VERSION}")
target_compile_options(vantrel_common INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${VANTREL_WERROR}>:-Werror>)
if(VANTREL_SANITIZE)
    target_compile_options(vantrel_common INTERFACE
        -fsanitize=${VANTREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vantrel_common INTERFACE -fsanitize=${VANTREL_SANITIZE})
endif()

# What makes a flaw harder to use, wherever compiler and linker have it.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
if(WIN32)
    set(hardening_compile)
    set(hardening_link -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
    check_linker_flag(CXX -fstack-protector-strong VANTREL_HAS_STACK_PROTECTOR) # it has a library
    if(VANTREL_HAS_STACK_PROTECTOR)
        list(APPEND hardening_compile -fstack-protector-strong)
        list(APPEND hardening_link -fstack-protector-strong)
    endif()
else()
    set(hardening_compile -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    set(hardening_link -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    if(NOT VANTREL_SANITIZE) # it is in the way of the sanitizers, and needs an optimiser
        target_compile_options(vantrel_common INTERFACE
            "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
    endif()
endif()
foreach(option IN LISTS hardening_compile)
    string(MAKE_C_IDENTIFIER "VANTREL_HAS${option}" known)
    check_cxx_compiler_flag(${option} ${known})
    if(${known})
        target_compile_options(vantrel_common INTERFACE ${option})
    endif()
endforeach()
foreach(option IN LISTS hardening_link)
    string(MAKE_C_IDENTIFIER "VANTREL_LINKS${option}" known)
    check_linker_flag(CXX ${option} ${known})
    if(${known})
        target_link_options(vantrel_common INTERFACE ${option})
    endif()
endforeach()

# Reading Qt's headers takes most of a compilation: they are read once for all that is alike.
set(precompiled_headers <QByteArray> <QDateTime> <QDir> <QHash> <QList> <QLocale> <QSet> <QString>
    <QStringList> <QVariant> <algorithm> <functional> <memory> <optional> <vector>)
file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/precompiled.cpp" CONTENT "")
function(vantrel_precompile name)
    add_library(${name} OBJECT "${CMAKE_BINARY_DIR}/precompiled.cpp")
    target_link_libraries(${name} PRIVATE vantrel_common Qt6::Core)
    target_compile_options(${name} PRIVATE ${ARGN})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_precompile_headers(${name} PRIVATE ${precompiled_headers})
endfunction()

# vantrel_room(NAME SOURCES file... [LINK target...])
# One folder under src/: a static library named vantrel_NAME. Its headers are included by their
# path below src/ ("base/Files.h"), so an #include shows which room a file leans on.
function(vantrel_room name)
    cmake_parse_arguments(room "" "" "SOURCES;LINK" ${ARGN})
    add_library(vantrel_${name} STATIC ${room_SOURCES})
    target_include_directories(vantrel_${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries(vantrel_${name} PUBLIC vantrel_common ${room_LINK})
    target_precompile_headers(vantrel_${name} REUSE_FROM precompiled)
endfunction()

# vantrel_program(NAME SOURCES file... [LINK target...])
function(vantrel_program name)
    cmake_parse_arguments(program "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${program_SOURCES})
    target_link_libraries(${name} PRIVATE vantrel_common ${program_LINK})
endfunction()

set(test_options -UQT_NO_CAST_FROM_ASCII) # plain literals in tests

# vantrel_test(NAME [LINK target...] [LABELS label...] [SERIAL])
# tests/<room>/tst_NAME.cpp becomes one test. SERIAL keeps it from running beside other SERIAL ones.
function(vantrel_test name)
    cmake_parse_arguments(test "SERIAL" "" "LINK;LABELS" ${ARGN})
    add_executable(tst_${name} tst_${name}.cpp)
    target_link_libraries(tst_${name} PRIVATE vantrel_common Qt6::Test ${test_LINK})
    target_include_directories(tst_${name} PRIVATE "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/tests")
    target_compile_options(tst_${name} PRIVATE ${test_options})
    target_precompile_headers(tst_${name} REUSE_FROM precompiled_tests)
    set_target_properties(tst_${name} PROPERTIES AUTOMOC ON)
    if(WIN32)
        vantrel_windows_plugins(tst_${name})
    endif()
    add_test(NAME ${name} COMMAND tst_${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_LOGGING_RULES=qt.qpa.*=false;TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/tsan.supp"
        LABELS "${test_LABELS}")
    if(test_SERIAL)
        set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
    endif()
endfunction()
