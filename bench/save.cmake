# Saving from the real main window (run on a display), with the editor
# benchmark's set-up.
add_executable(save_bench ${CMAKE_CURRENT_SOURCE_DIR}/save/save_bench.cpp)
target_link_libraries(save_bench PRIVATE melo_editor_bench)
