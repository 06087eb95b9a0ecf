#include "app/link.h"

#include "class/clslang.h"
#include "data/combine/combine.h"
#include "kernel/macro/macro.h"
#include "lumo/lumo.h"
#include "results/matrix/matrix.h"
#include "results/regress/regress.h"
#include "results/stores.h"

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
    link_more_macro_functions(); // kernel/macro.h
    link_matrix();               // results/matrix/matrix.h
    link_results();              // results/stores.h
    link_regress();              // results/regress/regress.h
    link_class();                // class/clslang.h
    link_lumo();                 // lumo/lumo.h
    link_combine();              // data/combine/combine.h
}

} // namespace korvu
