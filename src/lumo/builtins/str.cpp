// placeholder
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_str(MBiFn*) {}

} // namespace korvu
