// The machine of the matrix language: one evaluation stack of object
// pointers, the run-time registers, and one loop (m_xeq) running one
// function; a call is a recursive use of the same loop. Each instruction
// word is dispatched by one lookup in the instruction table, whose `xeq`
// column names the handler.
#pragma once
#include <cstdint>

#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"

namespace korvu {

inline constexpr int MSTAK_ENTRIES = 65536; // 0x80000 bytes of pointers
inline constexpr int MDEPTH_MAX = 4000;     // nested calls before "stack overflow"

struct MRt {
    const uint32_t* ops; // code of the running function
    const uint32_t* pc;  // current word
    LumoFcn* function;
    MObj** frame; // slot 0
    int32_t nargs;
    int32_t depth;
    int32_t line;
    int32_t version;
    uint8_t ado;
};
extern MRt m_rt;
extern MObj** m_stak;     // top entry
extern MObj** m_stakbase; // first entry
extern MObj** m_staktop;  // last usable entry
extern int32_t m_xrc, m_xrc_first;
extern int32_t m_condflag;
extern const char* m_xeqerrid;
// exit(n): the code that unwinds every call of the statement quietly, and
// the statement's return code it carries.
inline constexpr int32_t MXRC_EXIT = 10001;
extern int32_t m_exitrc;
// Instructions run since start-up (opcount()).
extern uint64_t m_opcount;

int lumostakinit(int how);
void lumostakfree();
int ixeq(LumoFcn* f);
void m_xeq(LumoFcn* f, int nargs);
// Reports the code with the given text (null: the standard text).
void m_custom_xeqerr(int code, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
void m_xeqerr(int code);
const char* m_xeqerrtext(int code);

// Pushes with the limit test; on overflow m_xrc is 3998 and the object, if
// unreferenced, released.
bool m_push(MObj* o);
inline void m_pop() {
    MObj* o = *m_stak--;
    mo_release(o);
}

// Views among an instruction's operands become plain values.
void m_unviewops(uint32_t op);

// Display of a value at the block prompt.
void m_list(const MObj* o);

// Built-in functions: handler of an index of `opbiltin`, null when the
// function is not there yet. A handler pops its n arguments and pushes one
// result, or sets m_xrc.
using MBiFn = void (*)(int nargs);
MBiFn m_bifn(int index);
// "name()" of a built-in, for the traceback.
const char* m_biid(int index);

// Structures.
void m_xeqstruct(MObj* def, int nargs);
MObj* m_mkstructref(const char* name);

void link_lumovm();

} // namespace korvu
