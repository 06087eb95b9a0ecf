// Translating a log or ptag document to another form: plain text through a
// private engine whose output log is the target, or HTML and typesetting
// markup through a private sink that writes each rendered line.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/log/log.h"
#include "output/ptl/ptl.h"
#include "output/spout.h"

namespace korvu {

enum { TR_TEXT = 0, TR_TEXMAN = 1, TR_HTML = 2, TR_WEBHTML = 3 };

// Bold and underline by colour.
struct Pen {
    uint8_t bold, underline;
};
static Pen tm_pens[8];

struct RichOut {
    FILE* fp;
    int kind;
    bool book;
    bool failed;
};

static void html_escaped(std::string& out, char c) {
    switch (c) {
    case '<': out += "&lt;"; break;
    case '>': out += "&gt;"; break;
    case '&': out += "&amp;"; break;
    default: out += c;
    }
}

static void tex_escaped(std::string& out, char c, bool book) {
    if (book) {
        out += c;
        return;
    }
    switch (c) {
    case '\\': out += "\\\\"; break;
    case '#': out += "\\#"; break;
    case '%': out += "\\%"; break;
    case '&': out += "\\&"; break;
    case '{': out += "{\\lbr}"; break;
    case '}': out += "{\\rbr}"; break;
    case '^': out += "{\\caret}"; break;
    case '~': out += "{\\tytilde}"; break;
    default: out += c;
    }
}

static const char* tex_lineart(char c) {
    switch (c) {
    case '|': return "\\VBAR";
    case '+': return "\\PLUS";
    case 1: return "\\TOPT";
    case 2: return "\\BOTT";
    case 3: return "\\LFTT";
    case 4: return "\\RGTT";
    case 5: return "\\BRC";
    case 6: return "\\BLC";
    case 7: return "\\TRC";
    case 8: return "\\TLC";
    }
    return "\\DASH";
}

// The link open at a column, from the template's link table.
static const uint8_t* link_at(const uint8_t* tpl, int col, bool starts) {
    const uint8_t* p = tpl_links(tpl);
    int count = *p++;
    for (int i = 0; i < count; i++) {
        int start = p[0], end = p[1], len = p[3];
        if (starts ? start == col : end == col) return p;
        p += 4 + len;
    }
    return nullptr;
}

static std::string link_target(const uint8_t* entry, bool plus_for_blank, bool hashes) {
    std::string t = reinterpret_cast<const char*>(entry + 4);
    std::string out;
    for (size_t i = 0; i < t.size(); i++) {
        if (plus_for_blank && t[i] == ' ')
            out += '+';
        else if (hashes && t[i] == '#' && i + 1 < t.size() && t[i + 1] == '#')
            out += '#', i++;
        else
            out += t[i];
    }
    return out;
}

static int rich_sink(void* user, const uint8_t* tpl, int msg) {
    auto* ro = static_cast<RichOut*>(user);
    if (msg != PTL_LINE || !tpl) return msg == PTL_MORE ? ' ' : 0;
    std::string out;
    bool html = ro->kind == TR_HTML || ro->kind == TR_WEBHTML;
    for (const uint8_t* m = tpl_markers(tpl); *m; m += strlen(reinterpret_cast<const char*>(m)) + 1)
        if (html) out += "<a name=\"" + std::string(reinterpret_cast<const char*>(m)) + "\"></a>";
    const char* text = tpl_text(tpl);
    int n = static_cast<int>(strlen(text));
    if (n == 0) {
        out += html ? "<p>\n" : "{\\smallskip}\n";
        if (fputs(out.c_str(), ro->fp) < 0) ro->failed = true;
        return 0;
    }
    const uint8_t* runs = tpl_runs(tpl);
    int col = 0;
    while (col < n) {
        uint8_t attr;
        int end = tpl_renpiece(runs, col, &attr);
        if (end <= col) end = n, attr = 0;
        int colour = attr & ATTR_COLOR;
        bool bold = (attr & ATTR_BOLD) || tm_pens[colour].bold;
        bool italic = attr & ATTR_ITALIC;
        bool under = (attr & ATTR_UNDERLINE) || tm_pens[colour].underline;
        if (attr & ATTR_LINEART) {
            if (html) {
                for (int i = col; i < end; i++) {
                    char c = text[i];
                    out += (c == '|' || c == 3 || c == 4)     ? '|'
                           : (c == '+' || (c >= 5 && c <= 8)) ? '+'
                                                              : '-';
                }
            } else {
                int i = col;
                while (i < end) {
                    if (text[i] == '-' || text[i] == 1 || text[i] == 2) {
                        int j = i;
                        while (j < end && text[j] == '-') j++;
                        if (j - i > 1) {
                            out += "\\HLI{" + std::to_string(j - i) + "}";
                            i = j;
                            continue;
                        }
                    }
                    out += tex_lineart(text[i] == '-' ? 0 : text[i]);
                    i++;
                }
            }
            col = end;
            continue;
        }
        std::string piece;
        for (int i = col; i < end; i++) {
            if (html) {
                if (ro->kind == TR_WEBHTML) {
                    if (const uint8_t* l = link_at(tpl, i, true)) {
                        if (l[2] == 12)
                            piece += "<a href=\"/help.cgi?" + link_target(l, true, true) + "\">";
                        else if (l[2] == 14)
                            piece +=
                                "<a href=\"search.cgi?query=" + link_target(l, true, false) + "\">";
                    }
                }
                html_escaped(piece, text[i]);
                if (ro->kind == TR_WEBHTML) {
                    const uint8_t* l = link_at(tpl, i + 1, false);
                    if (l && (l[2] == 12 || l[2] == 14)) piece += "</a>";
                }
            } else {
                tex_escaped(piece, text[i], ro->book);
            }
        }
        if (html) {
            if (bold) piece = "<b>" + piece + "</b>";
            if (italic) piece = "<i>" + piece + "</i>";
            if (under) piece = "<u>" + piece + "</u>";
        } else {
            const char* q = ro->book ? "`" : "";
            if (bold)
                piece = std::string(q) + "{\\bftt{" + piece + "}}" + q;
            else if (italic)
                piece = std::string(q) + "{\\sltt{" + piece + "}}" + q;
            if (under) piece = std::string(q) + "{\\underbar{" + piece + "}}" + q;
        }
        out += piece;
        col = end;
    }
    out += '\n';
    if (fputs(out.c_str(), ro->fp) < 0) ro->failed = true;
    return 0;
}

static bool hassuffix(const std::string& f) {
    size_t slash = f.rfind('/');
    size_t dot = f.rfind('.');
    return dot != std::string::npos && (slash == std::string::npos || dot > slash);
}

// Feeds the source through the engine 512 bytes at a time.
static int feed(Ptl* p, FILE* in) {
    uint8_t state;
    ptlsend_genascii_begin(&state);
    char buf[512];
    size_t got;
    while ((got = fread(buf, 1, sizeof buf, in)) > 0)
        ptlsend_genascii(&state, p, buf, static_cast<int>(got));
    ptlflush(p);
    return ferror(in) ? 692 : 0;
}

int translate_cmd(int kind) {
    char srcbuf[FNLEN], dstbuf[FNLEN];
    if (int rc = gettokfn(srcbuf, sizeof srcbuf)) return error(rc);
    dstbuf[0] = 0;
    char* p = peektok_chr();
    if (*p && *p != ',') {
        if (int rc = gettokfn(dstbuf, sizeof dstbuf)) return error(rc);
    }
    vable = ifable = oable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int replace = findopt("replace", 7, 0);
    int book = findopt("book", 4, 0);
    int ll = findopta("ll", 2, 79);
    int yebf = 0, whbf = 0, links = 0;
    if (kind != TR_TEXT) {
        yebf = findopt("yebf", 4, 0);
        whbf = findopt("whbf", 4, 0);
    }
    if (kind == TR_TEXMAN) links = findopt("links", 5, 0);
    if (int rc = chkopt()) return rc;
    if (int rc = chkrange("ll()", ll, 40, 255)) return rc;
    std::string src = srcbuf, dst = dstbuf;
    const char* tsuffix = (kind == TR_HTML || kind == TR_WEBHTML) ? ".html" : ".log";
    if (dst.empty()) {
        if (hassuffix(src)) {
            return errorf(198, "must specify file to be written if source has %s\n",
                          src.substr(src.rfind('.')).c_str());
        }
        dst = src + tsuffix;
    }
    if (!hassuffix(src)) src += ".ptag";
    if (!hassuffix(dst)) dst += tsuffix;
    FILE* in = fopen(src.c_str(), "rb");
    if (!in) return fierr(601, src.c_str());
    int fd = open(dst.c_str(), O_WRONLY | O_CREAT | (replace ? O_TRUNC : O_EXCL), 0666 & ~usermask);
    if (fd < 0) {
        fclose(in);
        return fierr(errno == EEXIST ? 602 : 603, dst.c_str());
    }
    Ptl* eng = ptlopen();
    if (!eng) {
        fclose(in);
        close(fd);
        unlink(dst.c_str());
        return 9813;
    }
    ptlset_maxwidth(eng, ll);
    int rc = 0;
    if (kind == TR_TEXT) {
        ptlset_user(eng, nullptr, nullptr);
        if (ptlset_log_output(eng, fd, 1))
            rc = 9814;
        else
            rc = feed(eng, in);
        ptlset_log_output(eng, fd, 2);
        if (!rc && ptl_query_log_err(eng)) rc = 693;
        ptlclose(eng);
        close(fd);
    } else {
        for (Pen& pen : tm_pens) pen = {0, 0};
        tm_pens[7].bold = 1;
        if (yebf) tm_pens[1].bold = 1;
        if (whbf) tm_pens[5].bold = 1;
        if (links) tm_pens[6].underline = 1;
        FILE* out = fdopen(fd, "w");
        RichOut ro{out, kind, book != 0, false};
        PtlChars chars{ll, 1};
        ptlset_chars(eng, &chars);
        ptlset_user(eng, rich_sink, &ro);
        bool html = kind != TR_TEXMAN;
        if (html) fputs("<pre>\n", out);
        rc = feed(eng, in);
        ptlset_user(eng, nullptr, nullptr);
        ptlclose(eng);
        if (html) fputs("</pre>\n", out);
        if (fclose(out) || ro.failed) rc = rc ? rc : 693;
    }
    fclose(in);
    if (rc) {
        unlink(dst.c_str());
        return rc >= 9000 ? rc : fierr(rc, dst.c_str());
    }
    spoutlevf(1, "(file %s written)\n", dst.c_str());
    return 0;
}

int translate_row(int) {
    return translate_cmd(TR_TEXT);
}

} // namespace korvu
