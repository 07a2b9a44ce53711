# Editor benchmarks: showing a preview in the image view.
add_executable(bench_showmat ${CMAKE_CURRENT_SOURCE_DIR}/editor/bench_showmat.cpp)
target_link_libraries(bench_showmat PRIVATE melo_widgets)
target_compile_definitions(bench_showmat PRIVATE MELO_SAMPLES_DIR="${MELO_SAMPLES_DIR}")
