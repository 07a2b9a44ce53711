#include "Recipes.h"

#include "GlobalConstants.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

constexpr int kFilesPerScene = 20;

std::string trimmed(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool parseOps(const std::string& text, const std::map<std::string, std::vector<ColourOp>>& defines,
              std::vector<ColourOp>& ops, std::string& error)
{
    std::stringstream parts(text);
    std::string part;
    while (std::getline(parts, part, ';')) {
        std::istringstream words(part);
        std::string name;
        if (!(words >> name))
            continue;
        std::vector<std::string> args;
        for (std::string arg; words >> arg;)
            args.push_back(arg);
        const auto defined = defines.find(name);
        if (defined != defines.end() && args.empty()) {
            ops.insert(ops.end(), defined->second.begin(), defined->second.end());
            continue;
        }
        ColourOp op = makeColourOp(name, args, error);
        if (!op)
            return false;
        ops.push_back(std::move(op));
    }
    if (ops.empty())
        error = "no operations";
    return !ops.empty();
}

const char* expectedCaption(int scene, int file)
{
    if (file < 4)
        return kTopCaptions[scene][file];
    if (file < 8)
        return kMidCaptions[scene][file - 4];
    return kDownCaptions[scene][file - 8];
}

}  // namespace

bool readRecipes(const std::string& path, std::vector<PresetRecipe>& recipes, std::string& error)
{
    std::ifstream in(path);
    if (!in) {
        error = "cannot read " + path;
        return false;
    }
    std::map<std::string, std::vector<ColourOp>> defines;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        line = trimmed(line);
        if (line.empty() || line[0] == '#')
            continue;
        const size_t colon = line.find(':');
        std::string why;
        if (colon == std::string::npos) {
            why = "no ':' after the head";
        } else {
            std::istringstream head(line.substr(0, colon));
            const std::string body = line.substr(colon + 1);
            std::string first;
            head >> first;
            if (first == "define") {
                std::string name;
                std::vector<ColourOp> ops;
                if (!(head >> name))
                    why = "define needs a name";
                else if (parseOps(body, defines, ops, why))
                    defines[name] = std::move(ops);
            } else {
                PresetRecipe recipe;
                std::istringstream sceneText(first);
                if (!(sceneText >> recipe.scene) || !(head >> recipe.file) || !(head >> recipe.caption))
                    why = "expected SCENE FILE CAPTION";
                else if (parseOps(body, defines, recipe.ops, why))
                    recipes.push_back(std::move(recipe));
            }
        }
        if (!why.empty()) {
            error = path + ":" + std::to_string(number) + ": " + why;
            return false;
        }
    }
    return true;
}

bool checkRecipesComplete(const std::vector<PresetRecipe>& recipes, std::string& error)
{
    std::set<std::pair<int, int>> seen;
    for (const PresetRecipe& recipe : recipes) {
        const std::string where = "scene " + std::to_string(recipe.scene) + " file " + std::to_string(recipe.file);
        if (recipe.scene < 0 || recipe.scene >= kSceneCount || recipe.file < 0 || recipe.file >= kFilesPerScene) {
            error = where + " does not exist";
            return false;
        }
        if (!seen.insert({recipe.scene, recipe.file}).second) {
            error = where + " has two recipes";
            return false;
        }
        if (recipe.caption != expectedCaption(recipe.scene, recipe.file)) {
            error = where + " is captioned " + expectedCaption(recipe.scene, recipe.file) + ", not " +
                    recipe.caption;
            return false;
        }
    }
    if (seen.size() != size_t(kSceneCount) * kFilesPerScene) {
        error = std::to_string(kSceneCount * kFilesPerScene - seen.size()) + " presets have no recipe";
        return false;
    }
    return true;
}
