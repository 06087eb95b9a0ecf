// The matrix language: the `lumo` command, its compiler and the settings it
// reads. A statement or a function goes through one compilation (cc_compile)
// into a block of 32-bit instruction words; a function is kept by name as a
// dictionary item of type 44, and the immediate statement as "<istmt>".
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

namespace korvu {

// What the compiler reads: the command copies the first three from the kept
// settings (`set lumostrict`, `set lumooptimize`, `set lumolnum`) as it starts.
extern uint8_t m_strict;   // every variable of a function must be declared
extern uint8_t m_optimize; // run the optimizer (default on)
extern uint8_t m_lnum;     // emit line-number instructions (turns the optimizer off)
extern uint8_t m_dbugflg;  // list the code of every compilation

// State of the command side, saved and restored by lumocmd.
extern int32_t lumo_state;   // 1 between statements, 2 compiling, -1 compile finished
extern int32_t lumo_cmdtype; // 1 to 4: the form of the command
extern uint8_t m_mayreadcons, m_abort_on_end;
extern int32_t lumo_xeq_depth;
extern int32_t m_sysclock;
extern std::string m_libpath;

// A compiled function as it stands in the dictionary (type 44): this header,
// then `nwords` code words. The object store of the machine takes this over.
struct LumoFcn {
    int32_t nwords;
    int32_t eltype, orgtype; // declared return type
    int32_t count;           // users; above 1 while running
    int32_t replaced;        // dropped at the next m_dropoldfcns
    int32_t pad;
    uint32_t code[1];
};
inline constexpr int DM_LUMOFCN_T = 44;
inline constexpr const char* mwrd_istmt = "<istmt>";

// Where the compiler reads further lines from: returns 0 and the line in
// `out`, 1 at end of input. The command sets it to the running source.
using LumoLineSource = int (*)(std::string& out);
extern LumoLineSource m_linesource;

// The machine's entry: runs a compiled function object; until the machine is
// linked, says that running code is not yet available.
using LumoRun = int (*)(LumoFcn* fcn);
extern LumoRun m_runhook;

// Compiles the text (one line; more come from m_linesource where the grammar
// needs them). Returns 0 and in *rest the unread text behind the statement,
// or 3000 after printing the message. `m_linesource` null: no further lines.
int cc_compile(const char* text, std::string* rest);
// The last compiled code (the whole function, literal blocks included).
const LumoFcn* cc_lastfcn();
LumoFcn* m_findfcn(const char* name);
void m_dropoldfcns();
void m_dropallfcns();
int m_dropfcn(const char* name);

// Prints the code as one instruction a line.
void m_disasm(const char* name, const uint32_t* code, int nwords);
// The same into a string (for tests).
std::string m_disasm_text(const uint32_t* code, int nwords);

// Command and start-up.
int lumocmd(int);
int lumoxeq(const char* text);
void lumoinit();
void link_lumo();
int set_lumodebug(); // `set lumodebug on|off`
// Name of the built-in function of an index of `opbiltin`.
const char* m_builtinname(int index);

} // namespace korvu
