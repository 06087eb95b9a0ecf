// The handlers of the instructions, named by the instruction: the `xeq`
// column of the instruction table. Each runs with m_rt.pc at its opcode word
// and leaves it at its last operand word; the loop then steps one word.
#pragma once

namespace korvu {

using MopXeq = void (*)();

// clang-format off
#define KORVU_MX(n) void mx_##n();
#define KORVU_MX_LIST(X) \
    X(notyet) X(unused) X(goto) X(pop) X(return) X(jmpfalse) X(nargs) X(store) X(storepop) X(load) X(inc) X(dec) \
    X(ismat) X(isscalar) X(opand) X(opee) X(opge) X(ople) X(opgt) X(oplt) X(opne) X(opnot) \
    X(opmult) X(oprsubscr) X(oppower) X(oprstosmat) X(opcall) X(opisrvec) X(opiscvec) \
    X(optst0) X(opisvec) X(opstop) X(opldlit) X(opplus) X(opelim) X(opfind) X(nargsr) \
    X(opsub) X(opalc) X(opldstr) X(oplist2) X(opldvoid) X(opor) X(oprstosmatp) X(opbiltin) \
    X(opisfcn) X(loadf) X(opaddc) X(opcor) X(opcand) X(opcsub) X(opcmult) X(opcdiv) X(opcee) \
    X(opcge) X(opcle) X(opclt) X(opcgt) X(opcne) X(opcadd) X(opneg) X(optrans) X(opdiv) \
    X(opaddr) X(opisreal) X(opisstr) X(opcpower) X(opdup) X(opld0) X(opld1) X(opldmiss) \
    X(opiscx) X(opisnumer) X(opdmult) X(oprowto) X(opcolto) X(line) X(opisvoid) X(oplsubscr) \
    X(oplstosmat2) X(oplsubscr1) X(oplstosmat1) X(oplstosmat2p) X(oplstosmat1p) X(opderef) \
    X(opref) X(opldnull) X(oplsstosmat1) X(oplsstosmat2) X(oprsstosmat) X(opsstomat) \
    X(opcallind) X(opextern) X(version) X(opolc) X(opfindf) X(preinc) X(predec) X(postinc) \
    X(postdec) X(opcomplex) X(opstruct) X(opdrill) X(opldmatd) X(opldmatdd) X(opalcstruct) \
    X(opcastp)
// clang-format on
KORVU_MX_LIST(KORVU_MX)
#undef KORVU_MX

} // namespace korvu
