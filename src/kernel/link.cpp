#include "kernel/link.h"

namespace korvu {

// Order does not matter: each function only stores pointers.
void link_all() {
    link_dictionary();
    link_programs();
    link_flow();
    link_varlists();
    link_labels();
    link_expressions();
    link_sorting();
    link_macro_functions();
    link_test_break();
}

} // namespace korvu
