// placeholder
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_files(MBiFn*) {}

} // namespace korvu
