// The smart recommendation ("AI智能影调"): a random combination of scene and
// presets drawn with the C library's generator, and the last six draws as a
// history the user can step through.
//
// The generator is never seeded, so the sequence of draws is the same in
// every run of the program; users see the same first recommendation on every
// start, which is intended.
#pragma once

#include "LayerGrading.h"

#include <QVector>

#include <functional>

// Scene 0..5 and the preset of each layer (top 0..3, mid 0..3, down 0..11);
// -1 means none.
struct RandomPick {
    int scene = -1;
    int top = -1;
    int mid = -1;
    int down = -1;

    bool operator==(const RandomPick& o) const
    {
        return scene == o.scene && top == o.top && mid == o.mid && down == o.down;
    }
    bool operator!=(const RandomPick& o) const { return !(*this == o); }
    // At least one layer is picked.
    bool hasLayers() const { return top >= 0 || mid >= 0 || down >= 0; }
    // The layers as a selection, every layer at the same strength.
    LayerSelection selection(int strength) const;
};

class SmartDraw
{
public:
    static constexpr int kHistorySize = 6;
    using Generator = std::function<int()>;

    // The generator defaults to std::rand.
    explicit SmartDraw(Generator generator = Generator());

    const RandomPick& pick() const { return m_pick; }
    const QVector<RandomPick>& history() const { return m_history; }

    // Draws a new pick: for scene, top, mid and down in turn a coin
    // (rand() % 2) decides whether the field gets a new value (rand() % 6,
    // % 4, % 4, % 12). A scene without a new value keeps the previous one;
    // a layer without one is -1. The pick is appended to the history, which
    // keeps the newest six.
    const RandomPick& draw();

    // Stepping through the history starts from the first record equal to
    // the current pick (so after a repeated draw it may jump back to an
    // older position).
    enum class Step {
        Moved,       // the pick is now the neighbouring record
        NotFound,    // empty history, or the pick is not in it: nothing to do
        AtEnd,       // no record in that direction
    };
    Step stepForward();
    Step stepBack();

private:
    Step step(int direction);

    Generator m_generator;
    RandomPick m_pick;
    QVector<RandomPick> m_history;
};
