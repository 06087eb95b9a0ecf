// The console edition.
#include "kernel/startup.h"

int main(int argc, char** argv) {
    return korvu::korvu_main(argc, argv);
}
