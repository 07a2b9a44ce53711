// Prints the first two smart draws of a fresh process, one per line as
// "scene top mid down": what a user gets from the first presses after start.
#include "SmartDraw.h"

#include <cstdio>

int main()
{
    SmartDraw draw;
    for (int i = 0; i < 2; ++i) {
        const RandomPick& p = draw.draw();
        std::printf("%d %d %d %d\n", p.scene, p.top, p.mid, p.down);
    }
    return 0;
}
