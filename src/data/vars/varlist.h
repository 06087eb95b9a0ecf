// Reading a variable list from the token stream into `varlist_vr`/`lnvar`,
// and the time-series recipes behind names such as `L.x` or `D2S12.y`.
#pragma once
#include <cstdint>

namespace korvu {

// Reads the list under `delims`; `isnew` for a list of new names. Stops at a
// keyword; returns a code. An existing-variable list fills `varlist_vr`,
// `varlist_rcp`, `nblist`/`blist` (parenthesised groups); a new-name list
// fills `newvarname`/`newvartype` (and `varlist_vr` with the number of a
// variable of that name already present, else 0).
int ssvlist(const char* delims, int isnew);

// New-name lists: names and storage types (0 when none was typed).
extern char (*newvarname)[33];
extern uint8_t* newvartype;

// The list of all variables but the estimation-sample one; for commands
// whose empty list means every variable.
void allvarlist();

// A storage-type word ("byte" ... "double", "str#"): its code, 0 for none,
// -1 for a string wider than allowed.
int cvtype(const char* t);

// ---------------------------------------------------------------------------
// Recipes
// ---------------------------------------------------------------------------
struct Recipe {
    int32_t lag;    // positive L, negative F
    int32_t dorder; // difference order
    int32_t nseas;  // seasonal differences in use
    int32_t seas[8];
};
static_assert(sizeof(Recipe) == 44);
inline constexpr int RECIPEHEAP = 100;
extern Recipe recipeheap[RECIPEHEAP];
extern int32_t recipeheap_next;
extern int32_t rcp_tvar, rcp_ivar; // time and panel variable, 0 for none

// Reads operator text ("L2D", "l.", "S12") into r: 0 or 198 (message printed).
// With quiet set, nothing is printed.
int rcpnormalize(Recipe* r, const char* text, int quiet = 0);
// "L1D2S12." text form into buf (at least 120 bytes).
char* rcpstr(char* buf, const Recipe* r, int dot);
char* rcpvarname(char* buf, const Recipe* r, const char* name);
bool rcpiszero(const Recipe* r);
// Shares an equal recipe in the heap or adds one; null (after the message,
// rc 1000 in *rc) when the heap is full.
Recipe* rcpinsert(const Recipe* r, int* rc);
void rcpheapreset();
int rcpxeqinit();
double rcpxeq(const Recipe* r, int v, int obs);
int rcptype(int code, const Recipe* r);
int realvarlist(int i); // underlying variable of item i (1-based)
Recipe* realrcp(int i);
double rkorvu_data(int item, int obs); // value of list item at an observation
// Turns every item with a recipe into a temporary variable (numbers put in
// varlist_vr); rcpfixdrop removes them again.
int rcpfixvarlist();
void rcpfixdrop();

// The copy of the list kept for commands run per by-group.
int savevlist();
int loadvlist();
void rmvlist();

// Abbreviates a name with operator for display.
char* tsabvar(const char* name, int width);

// ---------------------------------------------------------------------------
// Links to other subsystems; null until they are built
// ---------------------------------------------------------------------------
// The text of characteristic obj[name] ("_dta", "_TStvar"); null or "" for none.
extern const char* (*charget_hook)(const char* obj, const char* name);
// Sets characteristic obj[name] to value.
extern int (*charset_hook)(const char* obj, const char* name, const char* value);
// Stores a macro in r().
extern void (*post_rmacro)(const char* name, const char* value);

} // namespace korvu
