// The class language: dotted names, the lines that begin with a dot, class
// macro expansion, member programs, `.class` definitions and the `class`
// command.
#pragma once
#include <cstddef>
#include <string>

#include "class/clsstore.h"

namespace korvu {

// Where a name led: the holder of the value's key (null for a class type or
// a key form) and the value itself, references followed.
struct ClsRef {
    clskey* holder;
    clskey value;
    clskey owner;         // the instance or class type the last member belongs to
    clskey arr = nullkey; // when the last part is an array element: the array
    int32_t dex = -1;     // and the element's index from 0
    bool top = false;     // a top-level name of the global scope
};

extern clskey korvu_clsrtn; // the value of the last `class exit`

void link_class(); // the start-up link point calls this once

// Resolves a dotted name; with `create` a missing last member of the top
// level (or a missing array element) is made. Prints nothing; returns 0 or a
// code of the 4000 range.
int cls_find(const char* name, bool create, ClsRef* out);
// The same, with the message for a failure (the name in front of it).
int cls_find_report(const char* name, bool create, ClsRef* out);
// The class type of a name, read from name.class on the ado path if needed.
int cls_findclasstype(const char* name, clskey* out);
int cls_autoload(const char* name);
bool cls_chkname(const char* name);
bool cls_chkreserved(const char* name);

// A line that begins with a dot (the command word is in `token`).
int cls_clscmd();
// `...' forms that begin with a dot; text is the form without its quotes.
int cls_xpand(const char* text, char* dst, size_t n);
// A declaration `[type] name [= value]` of a class block or of `.Declare`.
struct Decl {
    int type = 0;        // 0: from the value; else a node type
    std::string clsname; // for an instance member
    std::string name;
    std::string value; // empty: the type's default
    bool hasvalue = false;
};
int cls_parse_decl(const std::string& text, Decl* d);
int cls_decl_value(const Decl& d, clskey* out);

// A value from the right side of an assignment or a declaration.
int cls_rvalue(const std::string& text, clskey* out);
// Runs member program `pgm` of an instance with args; *found 0 when absent.
int cls_run_member(clskey inst, const char* pgm, const char* args, int* found);

// The `class` command and its subcommands; `_cls`.
int stclass(int);
int clscmd_direct(int);
int cls_frame_end();
int cls_discard_all(); // `discard`: every object and class goes // temporary objects of the ending
                       // frame
void clsrtn_clear();

// An assignment `lhs = rhs` as the dot line makes it.
int cls_assign(const std::string& lhs, const std::string& rhs);
// A number as text: exact (reads back as the same double) or as `%18.0g`.
std::string cls_numtext(double x, bool exact);
// True when `word` called on the value runs something: a built-in member, a
// member program of its class, or a member coded for a built-in class.
bool cls_has_member_call(clskey value, const char* word);
// Runs one command line as if it had been read.
int cls_runline(const std::string& text);

// The log of changes (`class set logging`, `class undo`; clscmds.cpp).
extern clskey log_key;      // the `.__LOG` array
extern int32_t stlog_level; // 0 off, 1 changes by command lines, 2 all changes
void cls_log_newline();     // a command line begins: its changes get a marker
int cls_log_change(const std::string& lhs, const ClsRef& dst); // before a change
void cls_log_forget();                                         // all objects went
// The subcommands modify, nameof, nameoflocal, new, set, korvu, try, undo;
// *found 0 for another word.
int class_subcommand(const std::string& word, const std::string& rest, int* found);

// The classes coded here: `style` and `grid` (clsgraph.cpp).
// A call of a built-in member of one of them; *found 0 when not one.
int cls_builtin_member(clskey inst, const char* word, const char* args, char* dst, size_t n,
                       int* found);
int cls_make_builtin_classes();
// True when word is a member coded for class type ct or one it inherits from.
bool cls_builtin_has(clskey ct, const char* word);

} // namespace korvu
