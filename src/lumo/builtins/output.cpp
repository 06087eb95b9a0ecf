// placeholder
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_output(MBiFn*) {}

} // namespace korvu
