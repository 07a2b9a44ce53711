# Batch benchmark: twelve 12-megapixel photographs graded with one table by
# melo-grade (default --jobs and --jobs 1), ffmpeg's lut3d and G'MIC's map_clut.
add_executable(batch_bench ${CMAKE_CURRENT_SOURCE_DIR}/batch/batch_bench.cpp)
target_link_libraries(batch_bench PRIVATE melo_grading)
add_dependencies(batch_bench melo-grade melo_presets)
target_compile_definitions(batch_bench PRIVATE
  MELO_SAMPLES_DIR="${MELO_SAMPLES_DIR}"
  MELO_PRESET_DIR="${MELO_PRESET_DIR}"
  MELO_GRADE_PROGRAM="$<TARGET_FILE:melo-grade>")
