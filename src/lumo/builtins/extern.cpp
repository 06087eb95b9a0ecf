// placeholder
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_extern(MBiFn*) {}

} // namespace korvu
