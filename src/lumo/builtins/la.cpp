// placeholder
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_la(MBiFn*) {}

} // namespace korvu
