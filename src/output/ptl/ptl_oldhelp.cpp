// Old help mode: the older .hlp layout. Whole lines; `^...^` highlights and
// `@target!text@` links; "." and ".-" lines.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "output/ptl/ptl_internal.h"

namespace korvu::ptl {

static constexpr int kOhPiece = 1023; // longer pieces are cut

void oldhelp_feed(Ptl* p, const char* s, int n) {
    if (p->atstart) {
        p->atstart = 0;
        if (n > 0 && s[0] == '\n') s++, n--;
    }
    int i = 0;
    while (i < n) {
        const char* lf = static_cast<const char*>(memchr(s + i, '\n', n - i));
        int end = lf ? static_cast<int>(lf - s) : n;
        while (i < end) {
            int k = std::min(end - i, kOhPiece - p->nheld);
            memcpy(p->held + p->nheld, s + i, k);
            p->nheld += k;
            i += k;
            if (p->nheld >= kOhPiece) {
                int m = p->nheld;
                p->nheld = 0;
                oldhelp_piece(p, p->held, m);
            }
        }
        if (lf) {
            int m = p->nheld;
            p->nheld = 0;
            oldhelp_line(p, p->held, m);
            i = end + 1;
        }
    }
}

static bool all_of(const char* s, int n, const char* set) {
    for (int i = 0; i < n; i++)
        if (!strchr(set, s[i]) || !s[i]) return false;
    return true;
}

void oldhelp_line(Ptl* p, const char* s, int n) {
    if (n >= 1 && s[0] == '.') {
        if (all_of(s + 1, n - 1, " \t")) {
            end_line(p);
            return;
        }
        if (n >= 2 && s[1] == '-' && all_of(s + 2, n - 2, " ")) {
            std::string rule(std::max(0, p->width - p->col), '-');
            put_chars(p, rule.data(), static_cast<int>(rule.size()), p->attr | ATTR_LINEART);
            end_line(p);
            return;
        }
    }
    oldhelp_piece(p, s, n);
    end_line(p);
}

// Text outside the pairs: tabs to the next multiple of 8.
static void out_tabs(Ptl* p, const char* s, int n) {
    uint16_t ca = cur_cattr(p);
    int i = 0;
    while (i < n) {
        int j = i;
        while (j < n && s[j] != '\t') j++;
        if (j > i) put_chars(p, s + i, j - i, ca);
        if (j < n) {
            static const char blanks[8] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
            put_chars(p, blanks, 8 - p->col % 8, ca);
            j++;
        }
        i = j;
    }
}

struct OhKind {
    const char* word;
    int kind;
    int rest; // 0 any, 1 must be empty, 2 must not be empty
};
static constexpr OhKind kOhKinds[] = {
    {"browser", LINK_BROWSE, 0},     {"web", LINK_BROWSE, 0},       {"search", LINK_SEARCH, 0},
    {"back", LINK_BACK, 1},          {"net", LINK_NET, 0},          {"netfrom", LINK_NETFROM_D, 0},
    {"nsdialog", LINK_NET_D, 0},     {"sdialog", LINK_SEARCH_D, 0}, {"ado", LINK_ADO, 0},
    {"adosearch", LINK_ADO_D, 0},    {"cdialog", LINK_HELP_D, 0},   {"vdialog", LINK_VIEW_D, 0},
    {"update", LINK_UPDATE, 0},      {"adorm", LINK_ADORM, 0},      {"rnethelp", LINK_RNETHELP, 2},
    {"updatebox", LINK_UPDATE_D, 1},
};

// `@target@` or `@target!text@`; a `word:rest` target chooses the kind.
static bool oh_link(Ptl* p, std::string_view inner) {
    std::string u;
    for (size_t i = 0; i < inner.size(); i++) {
        u += inner[i];
        if (inner[i] == '@' && i + 1 < inner.size() && inner[i + 1] == '@') i++;
    }
    size_t bang = u.find('!');
    std::string left = u.substr(0, bang);
    std::string text = bang == std::string::npos ? left : u.substr(bang + 1);
    int kind = LINK_HELP;
    std::string target = left;
    size_t colon = left.find(':');
    bool word = colon != std::string::npos && colon > 0 && colon <= 13;
    for (size_t i = 0; word && i < colon; i++) word = isalnum(static_cast<unsigned char>(left[i]));
    if (word) {
        std::string w = left.substr(0, colon), rest = left.substr(colon + 1);
        if (w == "http" || w == "https") {
            kind = LINK_BROWSE;
        } else {
            const OhKind* k = nullptr;
            for (const OhKind& e : kOhKinds)
                if (w == e.word) k = &e;
            if (!k) return false;
            if (k->rest == 1 && !rest.empty()) return false;
            if (k->rest == 2 && rest.empty()) return false;
            kind = k->kind;
            target = rest;
        }
    } else if (left.compare(0, 5, "http:") == 0) {
        kind = LINK_BROWSE;
    }
    if (text.empty() || p->link_active) return false;
    uint8_t save = p->attr;
    p->attr = static_cast<uint8_t>((p->attr & ~ATTR_COLOR) | COL_LINK);
    if (!link_open(p, kind, target)) {
        p->attr = save;
        return false;
    }
    out_tabs(p, text.data(), static_cast<int>(text.size()));
    link_end_tag(p);
    p->attr = save;
    return true;
}

// Splits at pairs of ^ or @: the first that occurs (not at the very end of the
// line) opens, the next same character closes unless doubled.
void oldhelp_piece(Ptl* p, const char* s, int n) {
    int i = 0;
    while (i < n) {
        int j = i;
        while (j < n && s[j] != '^' && s[j] != '@') j++;
        if (j >= n - 1) {
            out_tabs(p, s + i, n - i);
            return;
        }
        out_tabs(p, s + i, j - i);
        char c = s[j];
        if (s[j + 1] == c) { // doubled: the character itself
            put_chars(p, &c, 1, cur_cattr(p));
            i = j + 2;
            continue;
        }
        int k = j + 1;
        while (k < n) {
            if (s[k] == c) {
                if (k + 1 < n && s[k + 1] == c) {
                    k += 2;
                    continue;
                }
                break;
            }
            k++;
        }
        if (k >= n) { // never closed: as it stands
            out_tabs(p, s + j, n - j);
            return;
        }
        std::string_view inner(s + j + 1, k - j - 1);
        if (c == '^') {
            uint8_t save = p->attr;
            p->attr = static_cast<uint8_t>((p->attr & ~ATTR_COLOR) | COL_HILITE);
            oldhelp_piece(p, inner.data(), static_cast<int>(inner.size()));
            p->attr = save;
        } else if (!oh_link(p, inner)) {
            out_tabs(p, s + j, k - j + 1);
        }
        i = k + 1;
    }
}

} // namespace korvu::ptl
