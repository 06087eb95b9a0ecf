// Display formats: the grammar of format text (`chkfmt`) and the
// rendering of numbers, strings and dates through it.
//
// Format text is at most 11 characters, starting with `%`:
//   %[-|~][0]w.d(e|f|g)[c]  numeric; `,` in place of `.` asks for the European
//                           decimal mark; `c` (after f or g) for commas in the
//                           integer part; a 0 before the width pads `f` with zeros
//   %[-|~]ws                string
//   %21x  %16H %16L %8H %8L hexadecimal-float text, bytes of the double or float
//   %[-]d<codes>            date
//   %[-]t<unit><codes>      time-series date, unit d w m q h y, or g (generic)
//
// Rendering never allocates: the core functions write into a caller's buffer of
// at least kFmtBufSize bytes. `sreforms` and kin write into `outbuf`.
//
// Rules of rendering:
// - `%w.0g` shows the value in at most w-1 characters before the sign, so that
//   positive and negative values line up: it tries 17, 16, ... 1 significant
//   digits (at most w-1 of them), written as C's %.<p>g does (trailing zeros cut,
//   exponent when the exponent is below -4 or not below p) with a leading "0."
//   shortened to ".", and takes the first that fits. `%w.dg` with d > 0 starts
//   at d digits instead. With `c`, the same search first takes only forms
//   without exponent, commas inserted; when none fits, the plain search runs.
// - `%w.df` writes fixed notation; with `c` it tries commas first, then none.
//   `%w.de` writes d decimals in exponential form. An `f` or `e` value too wide
//   for w is written as `%w.0g` would.
// - A value that fits in no way is written wider than the field, in the
//   shortest %.<p>g form (ties to more digits); nothing is ever cut.
// - A negative value whose text shows no digit other than 0 (-0.001 in %9.2f)
//   loses its sign.
// - A missing value (and a not-a-number) is `.`, `.a` .. `.z` right-justified
//   in the width, then moved by the format's justification like any result.
// - Left justification puts the text first, centre puts half of the spare
//   room (rounded down) before it.
// - Strings are padded to the width and never cut.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

inline constexpr int kFmtMaxText = 11; // characters of format text, `%` included
inline constexpr int kFmtMaxWidth = 244;
inline constexpr int kFmtBufSize = 256; // a rendering buffer of this size always suffices

// Filled by chkfmt. The first 16 bytes are the descriptor proper, in this order.
struct FmtDesc {
    int32_t justify = 1; // 1 right, -1 left, 0 centre
    int32_t width = 9;
    int32_t decimals = 0;
    char cls = 'g';  // 'g' numeric e/f/g; 'f' fixed-layout numeric (x H L d);
                     // 's' string
    char kind = 'g'; // 'e' 'f' 'g' 's' 'x' 'H' 'L' 'd' (dates and %t)
    char mod = ' ';  // ' ' or 'c' (commas)
    char comma = 0;  // 1: European decimal mark
    // beyond the descriptor proper
    char zero = 0;     // 1: %0w.df, zero padded
    char tsunit = 0;   // 0 for %d; 'd' 'w' 'm' 'q' 'h' 'y' 'g' for %t
    char pat[14] = {}; // date codes, the default pattern filled in
};

// 0 when `text` is a valid format, else 1 (no message). kind: 0 any, 1 numeric
// only, 2 string only; add 10 to allow the `-` and `~` marks on numbers.
int chkfmt(const char* text, int kind, FmtDesc* desc);
int chkdfmt(const char* text, FmtDesc* desc); // "%d..." and "%-d..."
int chktfmt(const char* text, FmtDesc* desc); // "%t..." and "%-t..."

// Hot path. Renders x by desc into buf (at least kFmtBufSize bytes), terminated;
// returns the length. A string descriptor renders as %9.0g.
int fmtrender(char* buf, const FmtDesc& desc, double x);
// Renders a string by a format's width and justification.
int fmtrenderstr(char* buf, const FmtDesc& desc, const char* s);
// The date path alone (desc.kind 'd'); fmtrender calls it.
int fmtrender_date(char* buf, const FmtDesc& desc, double x);
// Format text and number in one call; invalid text renders as %9.0g.
int fmtnum(char* buf, const char* fmt, double x);
// `s` right-justified (justify 1), left (-1) or centred (0) in width; never cut.
int strfmt(char* buf, const char* s, int width, int justify);

// The entry points of the rest of the system, writing into `outbuf`.
char* sreforms(const char* fmt, double x);
int reforms(const char* fmt, double x);           // also prints outbuf
char* safereforms(const char* fmt, double x);     // own buffer; outbuf untouched
char* srefdate(const char* fmt, double x);        // fmt "%d..."
char* sreftfmt(const char* fmt, double x);        // fmt "%t..."
char* sreformstr(const char* fmt, const char* s); // a string by "%ws"

// Value labels: `reforml_lookup(label, x)` gives the text of value x in value
// label `label`, or null. It is set by the labels subsystem; null means no labels.
using VlLookupFn = const char* (*)(const char* label, double x);
extern VlLookupFn reforml_lookup;
// Through the label when `label` is non-empty and has text for x: the text is
// cut to the format's width and justified as the format says; else as sreforms.
char* sreforml(const char* fmt, const char* label, double x);
int reforml(const char* fmt, const char* label, double x);
char* safereforml(const char* fmt, const char* label, double x);

// Integer ("%lld") and pointer ("%lx") forms into outbuf; the `reform` ones print.
char* sreformint(int64_t n);
int reformint(int64_t n);
char* sreformptr(const void* p);
int reformptr(const void* p);

// Compact-table helpers. suform: x by %w.0g with leading blanks dropped.
// suformd: x by %w.df (falling back as %w.df does), leading blanks dropped.
// reformld: n with commas, right-justified in w (into outbuf).
int suform(char* buf, double x, int width);
int suformd(char* buf, double x, int width, int decimals);
char* reformld(int64_t n, int width);

// Byte count as the `set memory` displays show it: "%luM" when whole megabytes,
// else "%luk" (kilobytes, rounded down).
int fmt_memval(char* buf, uint64_t bytes);
char* sreforms_memval(uint64_t bytes);

// Widen a numeric `%w.d?` format (12-byte slot) to len (cut to 244) when width
// plus decimals is below len: it becomes "%" [mark] len "." or "," d kind ["c"].
// Returns 1 when rewritten, else 0. Other formats are left alone.
int fixfmt(char* fmt, int len);
// For variables from..to: `slot(v)` gives the 12-byte format slot of v and
// `labellen(v)` the `vlmaxlen` of v's value label, or -1 when v is a string or
// has no value label.
void fixfmts(int from, int to, char* (*slot)(int v), int (*labellen)(int v));

// Validate `text` for a variable of storage type `vartype` (1..244 string, else
// numeric) and copy it into the 12-byte slot. 0, or 120 (invalid %format) with
// the slot unchanged; no message.
int setvarfmt(char* slot, const char* text, int vartype);

// `set dp comma|period`: under comma, `.` and `,` swap in rendered numbers.
extern uint8_t dpcomma;
int setdp(const char* word); // "comma" or "period"; 0, or 198 for another word
const char* dpname();        // "comma" or "period", for c(dp)

} // namespace korvu
