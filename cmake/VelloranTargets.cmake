# Shared compile settings for every Velloran target.
add_library(velloran_options INTERFACE)
target_compile_options(velloran_options INTERFACE -Wall -Wextra -Wno-missing-field-initializers)
target_compile_definitions(velloran_options INTERFACE QT_NO_KEYWORDS)
if(VELLORAN_WERROR)
  target_compile_options(velloran_options INTERFACE -Werror)
endif()
if(VELLORAN_SANITIZE)
  target_compile_options(velloran_options INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(velloran_options INTERFACE -fsanitize=address,undefined)
endif()

# velloran_module(NAME SOURCES... DEPENDS libs...)
function(velloran_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC velloran_options ${ARG_DEPENDS})
endfunction()

# The shared test main: a QGuiApplication around GoogleTest.
add_library(velloran_test_main STATIC ${PROJECT_SOURCE_DIR}/tests/support/TestMain.cpp)
target_link_libraries(velloran_test_main PUBLIC GTest::gtest Qt6::Gui)

# velloran_test(NAME LABEL SOURCES... DEPENDS libs...): one GoogleTest binary,
# each test case registered with CTest under the module's label.
function(velloran_test name label)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE velloran_options ${ARG_DEPENDS} velloran_test_main)
  target_compile_definitions(${name} PRIVATE
    VELLORAN_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    VELLORAN_CORPUS_DIR="${PROJECT_SOURCE_DIR}/../shared/qtz-corpus")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS ${label})
endfunction()

# Widget tests need a QApplication rather than a QGuiApplication.
add_library(velloran_widget_test_main STATIC ${PROJECT_SOURCE_DIR}/tests/support/WidgetTestMain.cpp)
target_link_libraries(velloran_widget_test_main PUBLIC GTest::gtest Qt6::Widgets Qt6::Test)

# velloran_widget_test(NAME LABEL SOURCES... DEPENDS libs...): as velloran_test,
# run inside a QApplication on the offscreen platform.
function(velloran_widget_test name label)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE velloran_options ${ARG_DEPENDS} velloran_widget_test_main)
  target_compile_definitions(${name} PRIVATE VELLORAN_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES LABELS ${label} ENVIRONMENT QT_QPA_PLATFORM=offscreen)
endfunction()
