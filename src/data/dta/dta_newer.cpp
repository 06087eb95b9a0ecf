// Reading the newer dataset-file formats: 114 and 115 (the layout of 113
// with 49-byte format fields) and the tagged formats 117, 118 and 119 (long
// strings stored apart, UTF-8 text, wider name and label fields). The file
// is read and checked whole and rebuilt as a format-113 image in an
// anonymous memory file, which the ordinary reader then loads; what the
// present limits cannot hold (names over 32 characters, strings over 244
// bytes, long labels) is cut or renamed, and said so after the load.
#include <errno.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "data/dta/dta.h"
#include "data/dta/dta_internal.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "output/spout.h"

namespace korvu {

namespace {

constexpr int MAXSTR = 244;

struct Cur {
    const uint8_t* p;
    size_t n, at = 0;
    bool swap = false;
    bool has(size_t k) const { return k <= n - at; }
    bool lit(const char* s) {
        size_t k = std::strlen(s);
        if (!has(k) || std::memcmp(p + at, s, k) != 0) return false;
        at += k;
        return true;
    }
    uint64_t uint(int bytes) { // caller checked has(bytes)
        uint64_t v = 0;
        for (int i = 0; i < bytes; ++i) {
            const uint64_t b = p[at + static_cast<size_t>(i)];
            v |= swap ? b << (8 * (bytes - 1 - i)) : b << (8 * i);
        }
        at += static_cast<size_t>(bytes);
        return v;
    }
};

// The image being built, in the byte order of the source file.
struct Img {
    std::vector<uint8_t> b;
    bool swap = false;
    void put(const void* s, size_t k) {
        const auto* q = static_cast<const uint8_t*>(s);
        b.insert(b.end(), q, q + k);
    }
    void u8(uint8_t v) { b.push_back(v); }
    void un(uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i)
            b.push_back(static_cast<uint8_t>(swap ? v >> (8 * (bytes - 1 - i)) : v >> (8 * i)));
    }
    void fixed(const std::string& s, size_t width) {
        size_t k = std::min(s.size(), width - 1);
        put(s.data(), k);
        b.insert(b.end(), width - k, 0);
    }
};

std::string field(const uint8_t* p, size_t n) {
    return std::string(reinterpret_cast<const char*>(p),
                       strnlen(reinterpret_cast<const char*>(p), n));
}

// Cut to at most `max` bytes without splitting a UTF-8 character.
size_t utf8_cut(const uint8_t* p, size_t len, size_t max) {
    if (len <= max) return len;
    size_t k = max;
    while (k > 0 && (p[k] & 0xC0) == 0x80) --k;
    return k;
}
std::string cut_text(const std::string& s, size_t max) {
    return s.substr(0, utf8_cut(reinterpret_cast<const uint8_t*>(s.data()), s.size(), max));
}

bool name_ok(const std::string& s) {
    if (s.empty() || s.size() > 32) return false;
    const auto alpha = [](unsigned char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    if (!alpha(static_cast<unsigned char>(s[0]))) return false;
    for (unsigned char c : s)
        if (!alpha(c) && !(c >= '0' && c <= '9')) return false;
    const uint8_t lev = s_outlev;
    s_outlev = 5;
    const int reserved = chkreserved(s.c_str());
    s_outlev = lev;
    return reserved == 0;
}

// A valid name from any text: other characters become underscores (one for
// each UTF-8 character), a leading digit gets one in front, at most 32
// characters, and a number behind when the name is taken.
std::string make_name(const std::string& s, std::set<std::string>& taken) {
    std::string r;
    for (size_t i = 0; i < s.size(); ++i) {
        const auto c = static_cast<unsigned char>(s[i]);
        if ((c & 0xC0) == 0x80) continue;
        const bool ok =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        r.push_back(ok ? static_cast<char>(c) : '_');
    }
    if (r.empty() || (r[0] >= '0' && r[0] <= '9')) r.insert(r.begin(), '_');
    if (r.size() > 32) r.resize(32);
    if (!name_ok(r)) {
        r = "_" + r;
        if (r.size() > 32) r.resize(32);
    }
    std::string cand = r;
    for (int k = 1; taken.count(cand) || !name_ok(cand); ++k) {
        std::string suf = std::to_string(k);
        cand = r.substr(0, 32 - suf.size()) + suf;
    }
    taken.insert(cand);
    return cand;
}

struct Var {
    int scode = 0; // source: 1..2045 strF, 32768 strL, or a numeric code of 113
    int swidth = 0;
    size_t soff = 0;
    int tcode = 0; // target code in 113
    size_t toff = 0;
    int64_t cut = 0;
    std::string name, fmt, vlab, lbl;
};

struct Gso {
    size_t at, len;
};

int numeric_from_tagged(unsigned c) {
    switch (c) {
    case 65530: return 251;
    case 65529: return 252;
    case 65528: return 253;
    case 65527: return 254;
    case 65526: return 255;
    default: return 0;
    }
}

} // namespace

// Notes kept from the last conversion for the load to print.
static std::vector<std::string> s_notes;

void dta_newer_notes() {
    for (auto& s : s_notes) {
        c_outlev = 1;
        spoutf("%s\n", s.c_str());
    }
    s_notes.clear();
}

// The whole file into memory.
static int slurp(int fd, std::vector<uint8_t>& f) {
    struct stat sb;
    if (fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode)) {
        f.resize(static_cast<size_t>(sb.st_size));
        if (lseek(fd, 0, SEEK_SET) < 0) return 692;
        int64_t r = lkorvu_read(fd, f.data(), sb.st_size);
        if (r < 0) return 692;
        f.resize(static_cast<size_t>(r));
        return 0;
    }
    uint8_t buf[65536];
    for (;;) {
        ssize_t r = ::read(fd, buf, sizeof buf);
        if (r < 0 && errno == EINTR) continue;
        if (r < 0) return 692;
        if (r == 0) break;
        f.insert(f.end(), buf, buf + r);
    }
    return 0;
}

static int write_image(const Img& I, int* out) {
    int fd = memfd_create("korvu-dta", MFD_CLOEXEC);
    if (fd < 0) return 692;
    if (lkorvu_write(fd, I.b.data(), static_cast<int64_t>(I.b.size())) !=
            static_cast<int64_t>(I.b.size()) ||
        lseek(fd, 0, SEEK_SET) < 0) {
        close(fd);
        return 692;
    }
    *out = fd;
    return 0;
}

// 113 header into the image.
static void image_header(Img& I, int nv, int32_t nobs, const std::string& label,
                         const std::string& stamp) {
    I.u8(113);
    I.u8(I.swap == (native_order() == 2) ? 1 : 2);
    I.u8(1);
    I.u8(0);
    I.un(static_cast<uint64_t>(nv), 2);
    I.un(static_cast<uint64_t>(static_cast<uint32_t>(nobs)), 4);
    I.fixed(cut_text(label, 80), 81);
    I.fixed(stamp.substr(0, 17), 18);
}

// Formats 114 and 115: the layout of 113 but for 49 bytes a format.
static int convert_binary(const std::vector<uint8_t>& f, Img& I) {
    if (f.size() < 109) return 610;
    if (f[1] != 1 && f[1] != 2) return 610;
    if (f[2] != 1) return 609;
    Cur c{f.data(), f.size()};
    c.swap = f[1] != native_order();
    I.swap = c.swap;
    c.at = 4;
    const int nv = static_cast<int16_t>(c.uint(2));
    const int32_t no = static_cast<int32_t>(c.uint(4));
    if (nv < 0 || no < 0) return 610;
    const size_t front = static_cast<size_t>(nv) * (1 + 33 + 2 + 49 + 33 + 81) + 2;
    if (!c.has(99 + front)) return 688;
    // the header and the sections up to the formats as they stand
    const size_t fmt_at = 109 + static_cast<size_t>(nv) * 36 + 2;
    I.put(f.data(), fmt_at);
    I.b[0] = 113;
    for (int i = 0; i < nv; ++i) {
        std::string s = field(f.data() + fmt_at + 49 * static_cast<size_t>(i), 49);
        I.fixed(s.size() <= 11 ? s : std::string(), 12);
    }
    const size_t rest = fmt_at + 49 * static_cast<size_t>(nv);
    I.put(f.data() + rest, f.size() - rest);
    return 0;
}

static int convert_tagged(const std::vector<uint8_t>& f, Img& I) {
    Cur c{f.data(), f.size()};
    // <NAME_dta><header><release>
    if (!c.lit("<")) return 610;
    {
        size_t e = c.at;
        while (e < c.n && e - c.at < 32 && f[e] != '>') ++e;
        if (e >= c.n || f[e] != '>' || e - c.at < 5 ||
            std::memcmp(f.data() + e - 4, "_dta", 4) != 0)
            return 610;
        c.at = e + 1;
    }
    if (!c.lit("<header><release>") || !c.has(3)) return 610;
    int rel = 0;
    for (int i = 0; i < 3; ++i) {
        const uint8_t d = f[c.at + static_cast<size_t>(i)];
        if (d < '0' || d > '9') return 610;
        rel = rel * 10 + (d - '0');
    }
    c.at += 3;
    if (rel > 119) return 6101;
    if (rel < 117) return 610;
    if (!c.lit("</release><byteorder>")) return 688;
    if (c.lit("LSF"))
        c.swap = native_order() != 2;
    else if (c.lit("MSF"))
        c.swap = native_order() != 1;
    else
        return 688;
    I.swap = c.swap;
    const int kb = rel == 119 ? 4 : 2, nb = rel == 117 ? 4 : 8, lb = rel == 117 ? 1 : 2;
    const size_t nl = rel == 117 ? 33 : 129, fl = rel == 117 ? 49 : 57, ll = rel == 117 ? 81 : 321;
    if (!c.lit("</byteorder><K>") || !c.has(static_cast<size_t>(kb))) return 688;
    const uint64_t K = c.uint(kb);
    if (!c.lit("</K><N>") || !c.has(static_cast<size_t>(nb))) return 688;
    const uint64_t N = c.uint(nb);
    if (!c.lit("</N><label>") || !c.has(static_cast<size_t>(lb))) return 688;
    const size_t labn = static_cast<size_t>(c.uint(lb));
    if (!c.has(labn)) return 688;
    std::string label(reinterpret_cast<const char*>(f.data() + c.at), labn);
    label = field(reinterpret_cast<const uint8_t*>(label.data()), label.size());
    c.at += labn;
    if (!c.lit("</label><timestamp>") || !c.has(1)) return 688;
    const size_t tsn = c.uint(1);
    if (!c.has(tsn)) return 688;
    std::string stamp = field(f.data() + c.at, tsn);
    c.at += tsn;
    if (!c.lit("</timestamp></header><map>") || !c.has(14 * 8)) return 688;
    c.at += 14 * 8;
    if (!c.lit("</map>")) return 688;
    // every section but the data must fit in what is left
    if (K > static_cast<uint64_t>(c.n)) return 688;
    const size_t nv = static_cast<size_t>(K);
    if (nv > 32767) return 900;
    if (!c.lit("<variable_types>") || !c.has(2 * nv)) return 688;
    std::vector<Var> v(nv);
    size_t sw = 0;
    bool anystrl = false;
    for (size_t i = 0; i < nv; ++i) {
        const unsigned code = static_cast<unsigned>(c.uint(2));
        Var& x = v[i];
        if (code >= 1 && code <= 2045) {
            x.scode = static_cast<int>(code), x.swidth = static_cast<int>(code);
            x.tcode = std::min(static_cast<int>(code), MAXSTR);
        } else if (code == 32768) {
            x.scode = 32768, x.swidth = 8, x.tcode = 1;
            anystrl = true;
        } else if (int t = numeric_from_tagged(code)) {
            x.scode = t, x.tcode = t, x.swidth = bytlenc(t);
        } else {
            return 688;
        }
        x.soff = sw;
        sw += static_cast<size_t>(x.swidth);
    }
    if (!c.lit("</variable_types><varnames>") || !c.has(nl * nv)) return 688;
    std::vector<std::string> rawnames(nv);
    for (size_t i = 0; i < nv; ++i) rawnames[i] = field(f.data() + c.at + nl * i, nl);
    c.at += nl * nv;
    const size_t sb = rel == 119 ? 4 : 2;
    if (!c.lit("</varnames><sortlist>") || !c.has(sb * (nv + 1))) return 688;
    std::vector<uint64_t> srt;
    for (size_t i = 0; i <= nv; ++i) srt.push_back(c.uint(static_cast<int>(sb)));
    if (!c.lit("</sortlist><formats>") || !c.has(fl * nv)) return 688;
    for (size_t i = 0; i < nv; ++i) v[i].fmt = field(f.data() + c.at + fl * i, fl);
    c.at += fl * nv;
    if (!c.lit("</formats><value_label_names>") || !c.has(nl * nv)) return 688;
    std::vector<std::string> rawvl(nv);
    for (size_t i = 0; i < nv; ++i) rawvl[i] = field(f.data() + c.at + nl * i, nl);
    c.at += nl * nv;
    if (!c.lit("</value_label_names><variable_labels>") || !c.has(ll * nv)) return 688;
    int cutlabels = 0;
    for (size_t i = 0; i < nv; ++i) {
        std::string l = field(f.data() + c.at + ll * i, ll);
        if (l.size() > 80) ++cutlabels;
        v[i].lbl = cut_text(l, 80);
    }
    c.at += ll * nv;
    if (!c.lit("</variable_labels><characteristics>")) return 688;
    struct Ch {
        std::string obj, name;
        size_t at, len;
    };
    std::vector<Ch> chars;
    while (c.lit("<ch>")) {
        if (!c.has(4)) return 688;
        const size_t len = static_cast<size_t>(c.uint(4));
        if (!c.has(len) || len < 2 * nl) return 688;
        Ch ch;
        ch.obj = field(f.data() + c.at, nl);
        ch.name = field(f.data() + c.at + nl, nl);
        ch.at = c.at + 2 * nl;
        ch.len = strnlen(reinterpret_cast<const char*>(f.data() + ch.at), len - 2 * nl);
        c.at += len;
        if (!c.lit("</ch>")) return 688;
        chars.push_back(ch);
    }
    if (!c.lit("</characteristics><data>")) return 688;
    const size_t data_at = c.at;
    if (sw && N > (c.n - c.at) / sw) return 688;
    if (N > 2147483646) return 901;
    const size_t no = static_cast<size_t>(N);
    c.at += sw * no;
    if (!c.lit("</data><strls>")) return 688;
    std::map<std::pair<uint64_t, uint64_t>, Gso> gso;
    const int ob = rel == 117 ? 4 : 8;
    while (c.lit("GSO")) {
        if (!c.has(4 + static_cast<size_t>(ob) + 5)) return 688;
        const uint64_t gv = c.uint(4), go = c.uint(ob);
        c.uint(1); // 129 binary, 130 text with its terminator
        const size_t len = static_cast<size_t>(c.uint(4));
        if (!c.has(len)) return 688;
        gso[{gv, go}] = Gso{c.at, strnlen(reinterpret_cast<const char*>(f.data() + c.at), len)};
        c.at += len;
    }
    if (!c.lit("</strls>")) return 688;
    // value labels: a damaged tail ends the section, as in the older formats
    struct Lb {
        std::string name;
        size_t at, len;
    };
    std::vector<Lb> labs;
    if (c.lit("<value_labels>")) {
        while (c.lit("<lbl>")) {
            if (!c.has(4 + nl + 3)) break;
            const size_t len = static_cast<size_t>(c.uint(4));
            std::string name = field(f.data() + c.at, nl);
            c.at += nl + 3;
            if (!c.has(len)) break;
            labs.push_back(Lb{name, c.at, len});
            c.at += len;
            if (!c.lit("</lbl>")) break;
        }
    }

    // names the present limits hold
    std::set<std::string> taken;
    for (size_t i = 0; i < nv; ++i)
        if (name_ok(rawnames[i])) taken.insert(rawnames[i]);
    std::map<std::string, std::string> vmap;
    for (size_t i = 0; i < nv; ++i) {
        if (name_ok(rawnames[i]) && !vmap.count(rawnames[i]) && taken.count(rawnames[i])) {
            v[i].name = rawnames[i];
        } else {
            v[i].name = make_name(rawnames[i], taken);
            s_notes.push_back("(variable " + rawnames[i] + " renamed " + v[i].name + ")");
        }
        vmap[rawnames[i]] = v[i].name;
    }
    std::set<std::string> ltaken;
    std::map<std::string, std::string> lmap;
    auto labname = [&](const std::string& s) {
        auto it = lmap.find(s);
        if (it != lmap.end()) return it->second;
        std::string r = name_ok(s) && !ltaken.count(s) ? s : make_name(s, ltaken);
        ltaken.insert(r);
        lmap[s] = r;
        return r;
    };
    for (size_t i = 0; i < nv; ++i)
        if (!rawvl[i].empty()) v[i].vlab = labname(rawvl[i]);

    // strings: target widths; long strings sized by their longest value
    auto strl_text = [&](const uint8_t* cell, const uint8_t** p, size_t* len) {
        Cur d{cell, 8};
        d.swap = c.swap;
        uint64_t gv, go;
        if (rel == 117) {
            gv = d.uint(4), go = d.uint(4);
        } else if (rel == 118) {
            gv = d.uint(2), go = d.uint(6);
        } else {
            gv = d.uint(3), go = d.uint(5);
        }
        auto it = gso.find({gv, go});
        if (it == gso.end()) {
            *p = nullptr, *len = 0;
            return gv == 0 && go == 0;
        }
        *p = f.data() + it->second.at, *len = it->second.len;
        return true;
    };
    if (anystrl) {
        for (size_t i = 0; i < nv; ++i) {
            if (v[i].scode != 32768) continue;
            size_t longest = 1;
            for (size_t r = 0; r < no; ++r) {
                const uint8_t* p;
                size_t len;
                if (!strl_text(f.data() + data_at + r * sw + v[i].soff, &p, &len)) return 688;
                longest = std::max(longest, std::min(len, static_cast<size_t>(MAXSTR)));
            }
            v[i].tcode = static_cast<int>(longest);
        }
    }
    size_t tw = 0;
    for (auto& x : v) {
        x.toff = tw;
        tw += static_cast<size_t>(bytlenc(x.tcode));
    }

    // the image
    image_header(I, static_cast<int>(nv), static_cast<int32_t>(no), label, stamp);
    for (auto& x : v) I.u8(static_cast<uint8_t>(x.tcode));
    for (auto& x : v) I.fixed(x.name, 33);
    {
        size_t k = 0;
        for (; k < srt.size() && srt[k] && srt[k] <= nv; ++k) I.un(srt[k], 2);
        for (; k <= nv; ++k) I.un(0, 2);
    }
    for (auto& x : v) I.fixed(x.fmt.size() <= 11 ? x.fmt : std::string(), 12);
    for (auto& x : v) I.fixed(x.vlab, 33);
    for (auto& x : v) I.fixed(x.lbl, 81);
    for (auto& ch : chars) {
        std::string obj = ch.obj == "_dta" ? ch.obj : (vmap.count(ch.obj) ? vmap[ch.obj] : "");
        if (obj.empty() || ch.name.size() > 32 || ch.name.empty()) continue;
        I.u8(1);
        I.un(33 + 33 + ch.len + 1, 4);
        I.fixed(obj, 33);
        I.fixed(ch.name, 33);
        I.put(f.data() + ch.at, ch.len);
        I.u8(0);
    }
    I.u8(0);
    I.un(0, 4);
    const size_t base = I.b.size();
    I.b.resize(base + tw * no, 0);
    for (size_t r = 0; r < no; ++r) {
        const uint8_t* src = f.data() + data_at + r * sw;
        uint8_t* dst = I.b.data() + base + r * tw;
        for (auto& x : v) {
            const uint8_t* s = src + x.soff;
            uint8_t* d = dst + x.toff;
            if (isnumtype(x.tcode)) {
                std::memcpy(d, s, static_cast<size_t>(x.swidth));
                continue;
            }
            const uint8_t* p = s;
            size_t len;
            if (x.scode == 32768) {
                if (!strl_text(s, &p, &len)) return 688;
            } else {
                len = strnlen(reinterpret_cast<const char*>(s), static_cast<size_t>(x.swidth));
            }
            const size_t w = static_cast<size_t>(x.tcode);
            if (len > w) {
                ++x.cut;
                len = utf8_cut(p, len, w);
            }
            if (len) std::memcpy(d, p, len);
        }
    }
    for (auto& lb : labs) {
        auto it = lmap.find(lb.name);
        if (it == lmap.end()) continue; // used by no variable
        I.un(lb.len, 4);
        I.fixed(it->second, 36);
        I.put(f.data() + lb.at, lb.len);
    }
    for (auto& x : v)
        if (x.cut) {
            char buf[160];
            std::snprintf(buf, sizeof buf, "(%lld value%s of %s cut to %d bytes)",
                          static_cast<long long>(x.cut), x.cut > 1 ? "s" : "", x.name.c_str(),
                          MAXSTR);
            s_notes.push_back(buf);
        }
    if (cutlabels)
        s_notes.push_back("(" + std::to_string(cutlabels) + " variable label" +
                          (cutlabels > 1 ? "s" : "") + " cut to 80 bytes)");
    return 0;
}

int dta_newer_kind(const uint8_t* first, size_t n) {
    if (n >= 1 && (first[0] == 114 || first[0] == 115)) return 1;
    if (n >= 1 && first[0] == '<') return 2;
    return 0;
}

int dta_newer_image(int fd, int* out) {
    s_notes.clear();
    std::vector<uint8_t> f;
    if (int rc = slurp(fd, f)) return rc;
    Img I;
    int rc = 610;
    switch (dta_newer_kind(f.data(), f.size())) {
    case 1: rc = convert_binary(f, I); break;
    case 2: rc = convert_tagged(f, I); break;
    default: break;
    }
    if (rc) {
        s_notes.clear();
        return rc;
    }
    return write_image(I, out);
}

} // namespace korvu
