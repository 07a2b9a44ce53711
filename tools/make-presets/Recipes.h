// The preset recipes: one line per preset file, written in the colour
// operations of ColourOps.h.
//
//   # comment
//   define NAME: OP ARGS; OP ARGS ...      a named list of operations
//   SCENE FILE CAPTION: OP ARGS; NAME ...  preset FILE (0-19) of SCENE (0-5)
//
// A NAME defined earlier may stand wherever an operation may.
#pragma once

#include "ColourOps.h"

#include <string>
#include <vector>

struct PresetRecipe {
    int scene = 0;
    int file = 0;
    std::string caption;
    std::vector<ColourOp> ops;

    Rgb apply(Rgb colour) const
    {
        for (const ColourOp& op : ops)
            colour = op(colour);
        return colour;
    }
};

// Reads every recipe of the file. On a fault returns false with the line
// number and reason in error.
bool readRecipes(const std::string& path, std::vector<PresetRecipe>& recipes, std::string& error);

// Checks that every preset of every scene has exactly one recipe and that its
// caption is the one its button shows.
bool checkRecipesComplete(const std::vector<PresetRecipe>& recipes, std::string& error);
