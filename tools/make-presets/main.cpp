// make-presets: writes the preset library from its recipes.
//
//   make-presets RECIPES OUT_DIR [POINTS]
//
// writes OUT_DIR/MELO/<scene>/<n>.CUBE for every recipe, POINTS (default 33)
// grid points per axis, numbers in a locale-independent form.
#include "Recipes.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

void appendNumber(std::string& out, double value)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    out.append(text, result.ptr);
}

bool writeCube(const std::filesystem::path& file, const PresetRecipe& recipe, int points)
{
    std::string text = "# MELO preset: scene " + std::to_string(recipe.scene) + ", file " +
                       std::to_string(recipe.file) + "\nTITLE \"" + recipe.caption + "\"\nLUT_3D_SIZE " +
                       std::to_string(points) + "\n";
    for (int b = 0; b < points; ++b)
        for (int g = 0; g < points; ++g)
            for (int r = 0; r < points; ++r) {
                const double step = 1.0 / (points - 1);
                const Rgb out = recipe.apply({r * step, g * step, b * step});
                for (int c = 0; c < 3; ++c) {
                    appendNumber(text, out[c]);
                    text += c < 2 ? ' ' : '\n';
                }
            }
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    return bool(stream.flush());
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 4) {
        fprintf(stderr, "usage: make-presets RECIPES OUT_DIR [POINTS]\n");
        return 2;
    }
    const int points = argc == 4 ? std::atoi(argv[3]) : 33;
    if (points < 2 || points > 64) {
        fprintf(stderr, "make-presets: POINTS must be 2 to 64\n");
        return 2;
    }
    std::vector<PresetRecipe> recipes;
    std::string error;
    if (!readRecipes(argv[1], recipes, error) || !checkRecipesComplete(recipes, error)) {
        fprintf(stderr, "make-presets: %s\n", error.c_str());
        return 1;
    }
    const std::filesystem::path root = std::filesystem::path(argv[2]) / "MELO";
    for (const PresetRecipe& recipe : recipes) {
        const std::filesystem::path folder = root / std::to_string(recipe.scene);
        std::error_code ignored;
        std::filesystem::create_directories(folder, ignored);
        const std::filesystem::path file = folder / (std::to_string(recipe.file) + ".CUBE");
        if (!writeCube(file, recipe, points)) {
            fprintf(stderr, "make-presets: cannot write %s\n", file.string().c_str());
            return 1;
        }
    }
    printf("make-presets: %zu presets in %s\n", recipes.size(), root.string().c_str());
    return 0;
}
