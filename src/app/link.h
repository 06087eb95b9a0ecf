// The one link point. Each subsystem fills the hooks it serves in one
// function of its own, `link_<subsystem>()`; `link_all` calls them all, once
// at start-up (before the data area is allocated) and from the test fixtures.
// A new subsystem adds its function here and one line to `link_all`.
#pragma once

namespace korvu {

void link_all();

void link_dictionary();      // the dictionary parked by the data area
void link_programs();        // ado path: sysdir(), adosize, numlists, autoload
void link_flow();            // foreach: the rest of the list
void link_varlists();        // varlists read by option scanning
void link_labels();          // labels and characteristics for data and macros
void link_expressions();     // expressions for macros, recipes, value labels, _by()
void link_sorting();         // sort for by, sortpreserve for frames
void link_macro_functions(); // extended macro functions that read the data
void link_test_break();      // the test switch that raises a break

} // namespace korvu
