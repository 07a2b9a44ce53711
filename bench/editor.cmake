# Editor benchmarks: showing a preview in the image view.
add_executable(bench_showmat ${CMAKE_CURRENT_SOURCE_DIR}/editor/bench_showmat.cpp)
target_link_libraries(bench_showmat PRIVATE melo_widgets)
target_compile_definitions(bench_showmat PRIVATE MELO_SAMPLES_DIR="${MELO_SAMPLES_DIR}")

# The editor in the real main window (run on a display: the window holds web
# views), sharing a set-up with the save benchmark.
add_library(melo_editor_bench STATIC ${CMAKE_CURRENT_SOURCE_DIR}/editor/EditorBench.cpp
                                     ${CMAKE_CURRENT_SOURCE_DIR}/editor/EditorBench.h)
target_include_directories(melo_editor_bench PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/editor)
target_link_libraries(melo_editor_bench PUBLIC melo_mainwindow Qt5::Test)
target_compile_definitions(melo_editor_bench PRIVATE
  MELO_SAMPLES_DIR="${MELO_SAMPLES_DIR}" MELO_PRESET_ARCHIVE="${MELO_PRESET_ARCHIVE}")
add_dependencies(melo_editor_bench melo_presets)
# HEIC and DNG copies of the photograph are made the way the tests make them.
add_executable(editor_bench ${CMAKE_CURRENT_SOURCE_DIR}/editor/editor_bench.cpp
                            ${PROJECT_SOURCE_DIR}/tests/document/FormatSamples.cpp)
target_include_directories(editor_bench PRIVATE ${PROJECT_SOURCE_DIR}/tests/document)
target_link_libraries(editor_bench PRIVATE melo_editor_bench melo_document)
