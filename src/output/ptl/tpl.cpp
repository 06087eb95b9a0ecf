// Helpers that read a finished Line template: the run table, the link table,
// line art, and lists of names.
#include <cstring>

#include "output/ptl/ptl.h"

namespace korvu {

int find_tag(const char* list, const char* name) {
    for (; *list; list += strlen(list) + 1)
        if (!strcmp(list, name)) return 1;
    return 0;
}

// As find_tag, but the name may stand in longer text: it ends at its
// terminator, a blank, a colon or a closing brace.
int tpl_tagmatch(const char* list, const char* name) {
    for (; *list; list += strlen(list) + 1) {
        size_t n = strlen(list);
        if (!strncmp(list, name, n)) {
            char c = name[n];
            if (c == 0 || c == ' ' || c == ':' || c == '}') return 1;
        }
    }
    return 0;
}

static int run_start(const uint8_t* runs, int r) {
    return runs[1 + 2 * r];
}
static int run_end(const uint8_t* runs, int r) {
    return r < runs[0] ? runs[1 + 2 * (r + 1)] : runs[3 + 2 * runs[0]];
}

int tpl_renpiece(const uint8_t* runs, int col, uint8_t* attr) {
    int last = runs[0];
    for (int r = 0; r <= last; r++) {
        if (run_start(runs, r) == col) {
            *attr = runs[2 + 2 * r];
            return run_end(runs, r);
        }
    }
    for (int r = 0; r <= last; r++) {
        if (run_start(runs, r) <= col && col < run_end(runs, r)) {
            *attr = runs[2 + 2 * r];
            return run_end(runs, r);
        }
    }
    *attr = 0;
    return 0;
}

const uint8_t* tpl_clickable(const uint8_t* links, int col, int* index) {
    int n = links[0];
    const uint8_t* e = links + 1;
    for (int i = 0; i < n; i++) {
        if (e[0] <= col && col < e[1]) {
            if (index) *index = i;
            return e;
        }
        e += 4 + e[3];
    }
    if (index) *index = -1;
    return nullptr;
}

const char* tpl_clickable_contents(const uint8_t* entry, int* kind) {
    if (kind) *kind = entry[2];
    return reinterpret_cast<const char*>(entry + 4);
}

int tpl_has_wide(const uint8_t* runs) {
    for (int r = 0; r <= runs[0]; r++)
        if (runs[2 + 2 * r] & ATTR_LINEART) return 1;
    return 0;
}

// Line art to plain text: tees 1 and 2 to '-', 3 and 4 to '|', corners to '+'.
void tpl_make_ascii(const uint8_t* runs, char* text) {
    for (int r = 0; r <= runs[0]; r++) {
        if (!(runs[2 + 2 * r] & ATTR_LINEART)) continue;
        for (int c = run_start(runs, r); c < run_end(runs, r); c++) {
            unsigned char ch = static_cast<unsigned char>(text[c]);
            if (ch == LA_TT || ch == LA_BT)
                text[c] = '-';
            else if (ch == LA_LT || ch == LA_RT)
                text[c] = '|';
            else if (ch >= LA_BRC && ch <= LA_TLC)
                text[c] = '+';
        }
    }
}

} // namespace korvu
