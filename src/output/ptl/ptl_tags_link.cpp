// Link tags: tagword [args]:text.
#include <string>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

bool tag_link(Ptl* p, TagCall& c) {
    int kind = c.def->arg;
    if (kind == -1)
        kind = p->korvu_kind;
    else if (kind == -2)
        kind = p->lumocmd_kind;
    std::string target;
    bool has_arg = c.a.link_arg(target);
    if (c.a.bad) return false;
    if ((c.def->flags & TF_ARG_MUST) && !has_arg) return false;
    if ((c.def->flags & TF_ARG_NONE) && has_arg) return false;
    bool has_text = c.a.at_text();
    if (!has_text && !c.a.end()) return false;
    // Without :text the argument is shown as text; blank text fails.
    std::string_view text = has_text ? c.a.text() : std::string_view(target);
    if (text.find_first_not_of(' ') == std::string_view::npos) return false;
    if (p->link_active) return false;     // a link cannot open inside a link
    if (p->link_open) para_place_held(p); // one still waiting for its held word closes
    if (!link_room(p, static_cast<int>(target.size()))) return false;
    uint8_t save = p->attr;
    p->attr = static_cast<uint8_t>((p->attr & ~ATTR_COLOR) | COL_LINK);
    if (kind == LINK_HELPB) p->attr = static_cast<uint8_t>((p->attr & ~ATTR_FONT) | ATTR_BOLD);
    link_open(p, kind == LINK_HELPB ? LINK_HELP : kind, target);
    if (has_text)
        process_text(p, text);
    else
        put_text(p, text);
    link_end_tag(p);
    // Afterwards font and colour are as before and underline is off.
    p->attr = static_cast<uint8_t>(save & ~ATTR_UNDERLINE);
    return true;
}

} // namespace korvu::ptl
