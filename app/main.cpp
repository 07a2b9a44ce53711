#include "Startup.h"

int main(int argc, char* argv[])
{
    return meloMain(argc, argv);
}
