#include "ui/help.h"

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/program.h"
#include "output/spout.h"
#include "results/stores.h"

namespace korvu {

static int help_busy = 0; // a help file that includes another is still showing

static std::string lower(std::string s) {
    for (char& c : s) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

static std::string trim(const std::string& s) {
    size_t a = 0, b = s.size();
    while (a < b && isspace(static_cast<unsigned char>(s[a]))) a++;
    while (b > a && isspace(static_cast<unsigned char>(s[b - 1]))) b--;
    return s.substr(a, b - a);
}

// A topic names a file: no directory parts, no blanks, nothing empty.
static bool topicok(const std::string& t) {
    if (t.empty() || t.size() > 80 || t[0] == '.') return false;
    for (char c : t)
        if (c == '/' || c == '\\' || isspace(static_cast<unsigned char>(c))) return false;
    return true;
}

static bool readfile(const std::string& path, std::string* out, size_t limit) {
    FILE* fp = fopen(path.c_str(), "rb");
    if (!fp) return false;
    out->clear();
    char buf[4096];
    size_t got;
    while ((got = fread(buf, 1, sizeof buf, fp)) > 0) {
        out->append(buf, got);
        if (limit && out->size() >= limit) break;
    }
    bool bad = ferror(fp);
    fclose(fp);
    return !bad;
}

// --- aliases --------------------------------------------------------------------

std::string helpalias(const std::string& name) {
    if (name.empty() || (!isalnum(static_cast<unsigned char>(name[0])) && name[0] != '_'))
        return "";
    std::string file = std::string(1, name[0]) + "help_alias";
    char path[1024];
    if (!srchado(file.c_str(), "maint", 1, path, sizeof path)) return "";
    FILE* fp = fopen(path, "r");
    if (!fp) return "";
    char line[512];
    std::string hit;
    while (fgets(line, sizeof line, fp)) {
        // each line: the alias, blanks, the topic; `*` starts a comment line
        char word[128], topic[128];
        if (line[0] == '*') continue;
        if (sscanf(line, "%127s %127s", word, topic) != 2) continue;
        if (lower(word) == name) {
            hit = lower(topic);
            break;
        }
    }
    fclose(fp);
    return hit;
}

int findhelpfile(const std::string& topic, std::string* path) {
    if (!topicok(topic)) return 0;
    char buf[1024];
    static constexpr const char* exts[] = {"hlp", "HLP", "ptag"};
    for (const char* e : exts) {
        if (srchado(topic.c_str(), e, 1, buf, sizeof buf)) {
            *path = buf;
            return 1;
        }
    }
    return 0;
}

// The topic a name resolves to, or empty: an alias, the file itself, or the
// full word of a built-in command the name abbreviates.
static std::string resolve(const std::string& name, std::string* path) {
    // a topic of several words: the file of the words joined by
    // underscores (help matrix accum), else the topic of the first word
    if (name.find(' ') != std::string::npos) {
        std::string joined, first;
        size_t i = 0;
        while (i < name.size()) {
            while (i < name.size() && name[i] == ' ') i++;
            size_t j = name.find(' ', i);
            if (j == std::string::npos) j = name.size();
            if (j > i) {
                std::string w = name.substr(i, j - i);
                if (first.empty()) first = w;
                joined += (joined.empty() ? "" : "_") + w;
            }
            i = j;
        }
        if (findhelpfile(joined, path)) return joined;
        return first.empty() ? "" : resolve(first, path);
    }
    std::string alias = helpalias(name);
    if (!alias.empty() && findhelpfile(alias, path)) return alias;
    if (findhelpfile(name, path)) return name;
    if (topicok(name)) {
        if (const char* full = findbuiltin(name.c_str())) {
            std::string f = lower(full);
            if (f != name && findhelpfile(f, path)) return f;
        }
    }
    return "";
}

// --- display ----------------------------------------------------------------

static int showfile(const std::string& path, int depth);

// A line that holds nothing but a comment tag "{* ...}".
static bool iscommentline(const std::string& line) {
    std::string t = trim(line);
    return t.size() >= 3 && t.compare(0, 2, "{*") == 0 && t.back() == '}' &&
           t.find('}') == t.size() - 1;
}

// Sends one file through the engine; lines "INCLUDE help topic" bring in
// another topic at that place.
static int showtext(const std::string& text, int depth) {
    bool ptag = text.compare(0, 6, "{ptag}") == 0;
    bool asis = text.compare(0, 6, "{asis}") == 0;
    if (!ptag && !asis) ptlsend(ptl_cur, "{k6hlp}\n", 8);
    uint8_t state;
    ptlsend_genascii_begin(&state);
    size_t pos = 0;
    while (pos < text.size()) {
        size_t nl = text.find('\n', pos);
        size_t end = nl == std::string::npos ? text.size() : nl + 1;
        std::string line = text.substr(pos, end - pos);
        pos = end;
        if (line.compare(0, 13, "INCLUDE help ") == 0) {
            std::string inc = lower(trim(line.substr(13))), ipath;
            if (depth < 4 && findhelpfile(inc, &ipath)) {
                if (int rc = showfile(ipath, depth + 1)) return rc;
                ptlsend(ptl_cur,
                        ptag   ? "{ptag}\n"
                        : asis ? "{asis}\n"
                               : "{k6hlp}\n",
                        ptag   ? 7
                        : asis ? 7
                               : 8);
            }
            continue;
        }
        if (iscommentline(line)) continue; // keywords and notes for the reader of the file
        ptlsend_genascii(&state, ptl_cur, line.data(), static_cast<int>(line.size()));
        if (kvpollstd()) return 1;
    }
    if (!text.empty() && text.back() != '\n') ptlsend(ptl_cur, "\n", 1);
    return 0;
}

static int showfile(const std::string& path, int depth) {
    std::string text;
    if (!readfile(path, &text, 0)) {
        return errorf(603, "file %s could not be read\n", path.c_str());
    }
    return showtext(text, depth);
}

static void notfound(const std::string& name, bool rform) {
    errptl(111, ("help for {hilite:" + plainmarkup(name.c_str()) + "} not found\n").c_str());
    c_outlev = 1;
    spout_setcoloroflev();
    if (!rform && topicok(name)) {
        std::string line =
            "try {help contents:help contents} or {search " + name + ":search " + name + "}\n";
        spoutptl(line.c_str());
    } else {
        spoutptl("try {help contents:help contents}\n");
    }
}

int ashelp(const char* given, int quiet) {
    std::string name = lower(trim(given ? given : ""));
    if (name.empty()) name = "contents";
    std::string path, topic;
    bool rform = false;
    // r(x): the topic x when there is one, else the name as it stands
    if (name.size() > 3 && name.compare(0, 2, "r(") == 0 && name.back() == ')') {
        rform = true;
        topic = resolve(name.substr(2, name.size() - 3), &path);
        if (topic.empty() && findhelpfile(name, &path)) topic = name;
    } else {
        topic = resolve(name, &path);
    }
    // a file whose head is ".h other" sends the reader on to another topic
    // three times at most: a chain longer than that counts as not found
    for (int hop = 0; !topic.empty(); hop++) {
        std::string head;
        if (!readfile(path, &head, 80) || head.compare(0, 3, ".h ") != 0) break;
        if (hop == 3) {
            topic.clear();
            break;
        }
        std::string next = lower(trim(head.substr(3, head.find('\n') - 3)));
        topic = resolve(next, &path);
    }
    if (topic.empty()) {
        if (!quiet) notfound(name, rform);
        return 111;
    }
    c_outlev = 1;
    if (c_outlev < s_outlev || !ptl_cur) return 0;
    if (help_busy > 2) {
        return errtext(1, "help system busy -- cannot complete request\n");
    }
    help_busy++;
    ptlptagsetweak(ptl_cur);
    spout_setcoloroflev();
    int rc = showfile(path, 0);
    ptlptagset(ptl_cur);
    spoutptl("{txt}");
    help_busy--;
    return rc;
}

int helpcmd(int) {
    std::string rest = wheretok() ? wheretok() : "";
    rest = trim(rest);
    // the rest of the line is used; let the tokenizer know it was read
    while (gettok(prsestd)[0]) {
    }
    return ashelp(rest.c_str(), 0);
}

int usfindhlpalias(int) {
    gettok(prsestd);
    if (!token[0] || tokisstr(token)) return error(198);
    std::string name = lower(token);
    gettok(prsestd);
    if (token[0]) return error(198);
    std::string topic = helpalias(name);
    if (topic.empty()) return 111;
    retval_clear();
    return retval_set_local("name", topic.c_str());
}

// --- search -----------------------------------------------------------------

struct HelpEntry {
    std::string topic, title, keys;
};

// The directories of the ado path, each with its one-letter sub-folders.
static std::vector<std::string> helpdirs() {
    std::vector<std::string> dirs;
    adoinit();
    const char* s = macptr("S_ADO");
    std::string p = s ? s : "";
    size_t start = 0;
    while (start <= p.size()) {
        size_t semi = p.find(';', start);
        std::string elem = trim(p.substr(start, semi == std::string::npos ? semi : semi - start));
        start = semi == std::string::npos ? p.size() + 1 : semi + 1;
        if (elem.size() > 1 && elem.front() == '"' && elem.back() == '"')
            elem = elem.substr(1, elem.size() - 2);
        if (elem.empty()) continue;
        std::string dir = mapdirname(elem.c_str());
        if (dir.compare(0, 2, "~/") == 0) {
            const char* home = getenv("HOME");
            dir = std::string(home ? home : "") + dir.substr(1);
        }
        if (dir.empty()) continue;
        dirs.push_back(dir);
        if (DIR* d = opendir(dir.c_str())) {
            std::vector<std::string> subs;
            while (dirent* e = readdir(d))
                if (strlen(e->d_name) == 1 && e->d_name[0] != '.') subs.push_back(e->d_name);
            closedir(d);
            std::sort(subs.begin(), subs.end());
            for (const std::string& sub : subs) dirs.push_back(dir + sub + "/");
        }
    }
    return dirs;
}

// Title: the text of the first {title:...}; keywords: the lines
// "{* keywords: ...}".
static void readentry(const std::string& path, HelpEntry* h) {
    std::string text;
    if (!readfile(path, &text, 65536)) return;
    size_t t = text.find("{title:");
    if (t != std::string::npos) {
        size_t e = text.find('}', t);
        if (e != std::string::npos) h->title = trim(text.substr(t + 7, e - t - 7));
    }
    for (size_t k = text.find("{* keywords:"); k != std::string::npos;
         k = text.find("{* keywords:", k + 1)) {
        size_t e = text.find('}', k);
        if (e == std::string::npos) break;
        h->keys += ' ';
        h->keys += trim(text.substr(k + 12, e - k - 12));
    }
}

static void collect(std::vector<HelpEntry>* out) {
    std::vector<std::string> seen;
    for (const std::string& dir : helpdirs()) {
        DIR* d = opendir(dir.c_str());
        if (!d) continue;
        std::vector<std::string> files;
        while (dirent* e = readdir(d)) files.push_back(e->d_name);
        closedir(d);
        std::sort(files.begin(), files.end());
        for (const std::string& f : files) {
            size_t dot = f.rfind('.');
            if (dot == std::string::npos || dot == 0) continue;
            std::string ext = f.substr(dot + 1);
            if (ext != "hlp" && ext != "ptag") continue;
            std::string topic = lower(f.substr(0, dot));
            if (std::find(seen.begin(), seen.end(), topic) != seen.end()) continue;
            seen.push_back(topic);
            HelpEntry h;
            h.topic = topic;
            readentry(dir + f, &h);
            out->push_back(h);
        }
    }
}

int searchcmd(int) {
    std::vector<std::string> words;
    for (gettok(prsestd); token[0]; gettok(prsestd)) {
        if (tokis(token, ",")) return error(198);
        std::string w = lower(tokisstr(token) ? token + 1 : token);
        if (!w.empty()) words.push_back(w);
    }
    if (words.empty()) {
        return errtext(198, "nothing to search for\n");
    }
    std::vector<HelpEntry> all;
    collect(&all);
    std::vector<const HelpEntry*> hits;
    for (const HelpEntry& h : all) {
        std::string hay = h.topic + " " + lower(h.title) + " " + lower(h.keys);
        bool ok = true;
        for (const std::string& w : words)
            if (hay.find(w) == std::string::npos) ok = false;
        if (ok) hits.push_back(&h);
    }
    std::sort(hits.begin(), hits.end(),
              [](const HelpEntry* a, const HelpEntry* b) { return a->topic < b->topic; });
    c_outlev = 1;
    std::string joined;
    for (const std::string& w : words) {
        if (!joined.empty()) joined += ' ';
        joined += w;
    }
    spout_setcoloroflev();
    spoutptl("{txt}search for {hi:");
    spout21(joined.c_str());
    spoutptl("}\n\n");
    for (const HelpEntry* h : hits) {
        std::string line = "{help " + h->topic + ":" + h->topic + "}";
        if (!h->title.empty()) {
            int pad = 2 + std::max(0, 18 - static_cast<int>(h->topic.size()));
            line += std::string(static_cast<size_t>(pad), ' ');
        }
        spoutptl(line.c_str());
        // a title "topic -- text" shows only its text beside the topic
        std::string t = h->title;
        if (t.compare(0, h->topic.size() + 4, h->topic + " -- ") == 0)
            t = t.substr(h->topic.size() + 4);
        spout21(t.c_str());
        spoutptl("\n");
        if (stopflag) return 1;
    }
    if (hits.empty()) spout21("no help topic matched\n");
    spout21("\n(end of search)\n");
    return stopflag;
}

} // namespace korvu
