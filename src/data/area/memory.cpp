// The figures and reports of `memory` and of the memory settings.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/memfig.h"
#include "output/spout.h"

namespace korvu {

char* format_mem_amt(uint64_t bytes, char* dst) {
    if (bytes % 0x100000 == 0)
        snprintf(dst, MEMAMTLEN, "%luM", static_cast<unsigned long>(bytes / 0x100000));
    else
        snprintf(dst, MEMAMTLEN, "%luk", static_cast<unsigned long>(bytes / 1024));
    return dst;
}

char* commafy(uint64_t n, char* dst) {
    char digits[32];
    int len = snprintf(digits, sizeof digits, "%lu", static_cast<unsigned long>(n));
    int j = 0;
    for (int k = 0; k < len; k++) {
        if (k && (len - k) % 3 == 0) dst[j++] = ',';
        dst[j++] = digits[k];
    }
    dst[j] = 0;
    return dst;
}

int memory_amount(const char* text, uint64_t current, uint64_t* out) {
    while (*text == ' ') text++;
    int sign = 0;
    if (*text == '+' || *text == '-') {
        sign = *text == '+' ? 1 : -1;
        text++;
        while (*text == ' ') text++;
    }
    if (!isdigit(static_cast<unsigned char>(*text))) return 198;
    const char* p = text;
    while (isdigit(static_cast<unsigned char>(*p))) p++;
    const char* digits_end = p;
    uint64_t mult = 1024;
    if (*p) {
        switch (tolower(static_cast<unsigned char>(*p))) {
        case 'b': mult = 1; break;
        case 'k': mult = 1024; break;
        case 'm': mult = 0x100000; break;
        case 'g': mult = 0x40000000; break;
        default: return 198;
        }
        p++;
        while (*p == ' ') p++;
        if (*p) return 198;
    }
    double num = strtod(std::string(text, digits_end - text).c_str(), nullptr);
    if (sign == 0) {
        if (num > 18446744073709551616.0 / static_cast<double>(mult)) return 912;
        if (num * static_cast<double>(mult) >= 18446744073709551616.0) return 912;
        *out = static_cast<uint64_t>(num) * mult;
        return 0;
    }
    if (num >= 18446744073709551616.0) return 912;
    uint64_t n = static_cast<uint64_t>(num), prod;
    if (__builtin_mul_overflow(n, mult, &prod)) return 912;
    if (sign > 0) {
        if (__builtin_add_overflow(current, prod, out)) return 912;
    } else {
        if (prod > current) return 912;
        *out = current - prod;
    }
    return 0;
}

int set_memory_rc(int rc) {
    switch (rc) {
    case 0: return 0;
    case 3: return 910;
    case 4: return 912;
    case 5: return 909;
    case 6: return 913;
    case 7: return 914;
    case 8: return 691;
    default: return 1000;
    }
}

MemoryFigures memory_figures() {
    MemoryFigures f{};
    const uint8_t* m = reinterpret_cast<const uint8_t*>(mapj);
    const int64_t used = usedwidth();
    f.N_cur = maxobs;
    f.N_curmax = tmaxobs;
    f.k_cur = maxvar;
    f.w_cur = syslrecl;
    f.M_total = static_cast<double>(vlblptr - m);
    f.M_data = static_cast<double>(cddaptr - m);
    f.M_dyn = static_cast<double>(vlblptr - cddaptr);
    f.size_ptr = 4;
    f.k = nvar;
    f.width = static_cast<double>(used);
    f.adosize = dahooks.adosize ? dahooks.adosize() : 1000;
    f.matsize = matsize;
    f.n_repart = n_repart;
    f.n_shift = n_shift;
    f.M_oh = static_cast<double>(cur_fixed);
    f.M_matsize = static_cast<double>(cur_matmem);
    uint64_t dm = dahooks.dict_bytes ? dahooks.dict_bytes() : 0;
    dm += dahooks.lumo_bytes ? dahooks.lumo_bytes() : 0;
    f.M_dm = static_cast<double>(dm);

    f.overhead = static_cast<uint64_t>(nobs) * 4;
    f.data = static_cast<uint64_t>(nobs) * static_cast<uint64_t>(used);
    f.data_overhead = f.overhead + f.data;
    f.total = static_cast<uint64_t>(vlblptr - m);
    f.free = f.total > f.data_overhead ? f.total - f.data_overhead : 0;
    f.maxvar_usage = cur_fixed;
    f.matsize_usage = cur_matmem;
    f.other = dm;
    f.other_total = f.maxvar_usage + f.matsize_usage + f.other;
    f.grand_total = f.total + f.other_total;
    return f;
}

static void detail_line(const char* label, uint64_t n, uint64_t total) {
    char num[40];
    double pct = total ? 100.0 * static_cast<double>(n) / static_cast<double>(total) : 0.0;
    spoutptlf("{txt}{col 5}%s{col 40}{res}%16s{txt}%10.2f%%\n", label, commafy(n, num), pct);
}
static void other_line(const char* label, uint64_t n) {
    char num[40];
    spoutptlf("{txt}{col 5}%s{col 40}{res}%16s\n", label, commafy(n, num));
}

void memory_report(const MemoryFigures& f) {
    spoutptl("\n{txt}{col 51}bytes\n");
    spoutptl("{hline 68}\n");
    spoutptl("Details of {cmd:set memory} usage\n");
    detail_line("overhead (pointers)", f.overhead, f.total);
    detail_line("data", f.data, f.total);
    spoutptl("{col 37}{hline 28}\n");
    detail_line("data + overhead", f.data_overhead, f.total);
    detail_line("free", f.free, f.total);
    spoutptl("{col 37}{hline 28}\n");
    detail_line("Total allocated", f.total, f.total);
    spoutptl("{hline 68}\n");
    spoutptl("Other memory usage\n");
    other_line("{cmd:set maxvar} usage", f.maxvar_usage);
    other_line("{cmd:set matsize} usage", f.matsize_usage);
    other_line("programs, saved results, etc.", f.other);
    spoutptl("{col 37}{hline 19}\n");
    other_line("Total", f.other_total);
    spoutptl("{hline 68}\n");
    char num[40];
    spoutptlf("{txt}Grand total{col 40}{res}%16s\n", commafy(f.grand_total, num));
}

void memory_table() {
    char amt[32];
    const double M = 1048576.0;
    spoutptl("\n{title:Current memory allocation}\n\n");
    spoutptl("{txt}{col 21}current{col 61}memory usage\n");
    spoutptl("{col 5}settable{col 23}value{col 33}description{col 61}(1M = 1024k)\n");
    spoutptl("{col 5}{hline 68}\n");
    spoutptlf(
        "{col 5}set maxvar{col 22}{res}%6d{txt}{col 33}max. variables allowed{col 61}%10.3fM\n",
        maxmaxvar, static_cast<double>(cur_fixed) / M);
    spoutptlf("{col 5}set memory{col 22}{res}%7s{txt}{col 33}max. data space{col 61}%10.3fM\n",
              format_mem_amt(totalmemory, amt), static_cast<double>(totalmemory) / M);
    spoutptlf(
        "{col 5}set matsize{col 21}{res}%7d{txt}{col 33}max. RHS vars in models{col 61}%10.3fM\n",
        matsize, static_cast<double>(cur_matmem) / M);
    spoutptl("{col 61}{hline 11}\n");
    spoutptlf("{col 55}%16.3fM\n", static_cast<double>(cur_fixed + totalmemory + cur_matmem) / M);
}

void trouble_at_startup_msg() {
    if (!startup_trouble) return;
    char a[32], b[32];
    spoutptl("{txt}Note: Korvu has been initialized with{col 45}instead of\n");
    spoutptlf("{col 11}set memory  {res}%7s{txt}{col 45}{res}%7s{txt}\n",
              format_mem_amt(totalmemory, a), format_mem_amt(asked_totalmemory, b));
    spoutptlf("{col 11}set maxvar  {res}%7d{txt}{col 45}{res}%7d{txt}\n", maxmaxvar,
              asked_maxmaxvar);
    spoutptlf("{col 11}set matsize {res}%7d{txt}{col 45}{res}%7d{txt}\n", matsize, asked_matsize);
    spoutptl("because the operating system refused to provide\n");
    spoutptl("sufficient memory for the requested amounts.\n");
    spoutptl("The amounts requested remain your preferences:\n");
    spoutptlf("{col 5}set memory %s, set maxvar %d, set matsize %d\n",
              format_mem_amt(asked_totalmemory, b), asked_maxmaxvar, asked_matsize);
}

} // namespace korvu
