// The console edition.
#include "kernel/loop/startup.h"

int main(int argc, char** argv) {
    return korvu::korvu_main(argc, argv);
}
