// Paragraph mode: the word filler. Text comes in chunks (one attribute each);
// words are placed between the margins with one blank between them, two after
// a sentence end that had two or more, none at a fresh start.
#include <cstring>
#include <string>

#include "output/ptl/ptl_internal.h"

namespace korvu::ptl {

static bool is_blank(char c) {
    return c == ' ';
}

bool held_has_link(const Ptl* p) {
    for (int i = 0; i < p->wordlen; i++)
        if (p->wordattr[i] & CA_LINK) return true;
    return false;
}

// Writes a word run by run of equal attribute; `a` null means all in `ca`.
static void write_word(Ptl* p, const char* w, const uint16_t* a, int n, uint16_t ca) {
    if (!a) {
        put_chars(p, w, n, ca);
        return;
    }
    int i = 0;
    while (i < n) {
        int j = i + 1;
        while (j < n && a[j] == a[i]) j++;
        put_chars(p, w + i, j - i, a[i]);
        i = j;
    }
}

static void after_word(Ptl* p, char last) {
    p->sentence = (last == '.' || last == '!' || last == '?' || last == ':') ? 1 : 0;
    p->nblanks = 0;
}

// The blanks rule, then the word on this line if it fits, else on a new one.
static void place_word(Ptl* p, const char* w, const uint16_t* a, int n, uint16_t ca) {
    if (n <= 0) return;
    int b = 1;
    if (p->sentence == 2 && p->nblanks == 0)
        b = 0;
    else if (p->sentence == 1 && p->nblanks >= 2)
        b = 2;
    if (p->empty) b = 0;
    if (p->empty || p->col + b + n <= p->width) {
        if (b) put_chars(p, "  ", b, p->blankattr);
    } else {
        emit_line(p);
        start_line(p, false);
    }
    write_word(p, w, a, n, ca);
    after_word(p, w[n - 1]);
}

// A pending link closes when the held word that ends it has been written.
static void close_pending_link(Ptl* p) {
    if (p->link_open && !p->link_active) link_force_close(p);
}

void para_place_held(Ptl* p) {
    if (!p->wordlen) return;
    place_word(p, p->word, p->wordattr, p->wordlen, 0);
    p->wordlen = 0;
    close_pending_link(p);
}

static void hold_append(Ptl* p, const char* s, int n, uint16_t ca) {
    if (p->wordlen + n >= PTL_WORDMAX) { // too long to hold: out at once on a fresh line
        if (!p->empty) {
            emit_line(p);
            start_line(p, false);
        }
        write_word(p, p->word, p->wordattr, p->wordlen, 0);
        put_chars(p, s, n, ca);
        p->wordlen = 0;
        after_word(p, s[n - 1]);
        close_pending_link(p);
        return;
    }
    memcpy(p->word + p->wordlen, s, n);
    for (int i = 0; i < n; i++) p->wordattr[p->wordlen + i] = ca;
    p->wordlen += n;
}

static void chunk(Ptl* p, const char* s, int n, uint16_t ca) {
    if (n <= 0) return;
    std::string bound;
    if (p->bind > 0) { // {bind:}: blanks become the non-breaking blank
        bound.assign(s, n);
        for (char& c : bound)
            if (c == ' ') c = 19;
        s = bound.data();
    }
    int i = 0;
    if (p->wordlen) {
        if (!is_blank(s[0])) { // the held word goes on
            int j = 0;
            while (j < n && !is_blank(s[j])) j++;
            hold_append(p, s, j, ca);
            if (j == n) return;
            para_place_held(p);
            i = j;
        } else {
            para_place_held(p);
        }
    }
    while (i < n) {
        if (is_blank(s[i])) {
            p->nblanks++;
            p->blankattr = ca;
            i++;
            continue;
        }
        int j = i;
        while (j < n && !is_blank(s[j])) j++;
        if (j == n) { // runs to the end of the chunk: held
            hold_append(p, s + i, n - i, ca);
            return;
        }
        place_word(p, s + i, nullptr, j - i, ca);
        i = j;
    }
}

// A chunk that ends in a line feed is the chunk without it followed by two
// blanks, so a sentence ending at a line end keeps its double space.
void para_text(Ptl* p, const char* s, int n, uint16_t ca) {
    int i = 0;
    while (i < n) {
        const char* lf = static_cast<const char*>(memchr(s + i, '\n', n - i));
        if (!lf) {
            chunk(p, s + i, n - i, ca);
            break;
        }
        int j = static_cast<int>(lf - s);
        chunk(p, s + i, j - i, ca);
        chunk(p, "  ", 2, ca);
        i = j + 1;
    }
}

} // namespace korvu::ptl
