# Grading benchmarks: applying a 33-point LUT to a 24-megapixel photograph,
# against the plain arithmetic and Debian's ffmpeg, and reading tables.
add_executable(lut_bench ${CMAKE_CURRENT_SOURCE_DIR}/grading/lut_bench.cpp)
target_link_libraries(lut_bench PRIVATE melo_grading)
add_dependencies(lut_bench melo_presets)
target_compile_definitions(lut_bench PRIVATE
  MELO_SAMPLES_DIR="${MELO_SAMPLES_DIR}"
  MELO_PRESET_DIR="${MELO_PRESET_DIR}")
