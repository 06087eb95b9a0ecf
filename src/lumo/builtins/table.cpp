// The table of built-in functions: one row a name, searched linearly by the
// compiler; the function index is the number `opbiltin` carries, and the
// machine finds the handler by it. Rows sharing an index share a handler
// (ln, log). A row whose handler is not written yet says so when it runs.
#include <cstdio>
#include <cstring>

#include "lumo/builtins/bi.h"
#include "lumo/builtins/bimore.h"
#include "lumo/front/cc.h"

namespace korvu {

static const MBuiltin m_bitab[] = {
    {"rows", 1, ET_REAL, OT_SCALAR, 1, 1},
    {"cols", 2, ET_REAL, OT_SCALAR, 1, 1},
    {"length", 3, ET_REAL, OT_SCALAR, 1, 1},
    {"sizeof", 4, ET_REAL, OT_SCALAR, 1, 1},
    {"eltype", 6, ET_STRING, OT_SCALAR, 1, 1},
    {"orgtype", 7, ET_STRING, OT_SCALAR, 1, 1},
    {"isreal", 8, ET_REAL, OT_SCALAR, 1, 1},
    {"isstring", 9, ET_REAL, OT_SCALAR, 1, 1},
    {"ispointer", 10, ET_REAL, OT_SCALAR, 1, 1},
    {"iscomplex", 11, ET_REAL, OT_SCALAR, 1, 1},
    {"isview", 13, ET_REAL, OT_SCALAR, 1, 1},
    {"isfleeting", 17, ET_REAL, OT_SCALAR, 1, 1},
    {"isrealvalues", 18, ET_REAL, OT_SCALAR, 1, 1},
    {"issymmetric", 19, ET_REAL, OT_SCALAR, 1, 1},
    {"issymmetriconly", 20, ET_REAL, OT_SCALAR, 1, 1},
    {"rowshape", 21, ET_TM, OT_MATRIX, 2, 2},
    {"colshape", 40, ET_TM, OT_MATRIX, 2, 2},
    {"J", 24, ET_TM, OT_MATRIX, 3, 3},
    {"I", 25, ET_REAL, OT_MATRIX, 1, 2},
    {"diagonal", 41, ET_NUMERIC, OT_COLVEC, 1, 1},
    {"_diag", 42, ET_TM, OT_MATRIX, 2, 2},
    {"_transpose", 43, ET_TM, OT_MATRIX, 1, 1},
    {"_transposeonly", 44, ET_TM, OT_MATRIX, 1, 1},
    {"_conj", 45, ET_TM, OT_MATRIX, 1, 1},
    {"conj", 46, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"Re", 47, ET_REAL, OT_MATRIX, 1, 1},
    {"Im", 48, ET_REAL, OT_MATRIX, 1, 1},
    {"C", 49, ET_COMPLEX, OT_MATRIX, 1, 2},
    {"c", 50, ET_TM, OT_SCALAR, 1, 1},
    {"swap", 51, ET_TM, OT_MATRIX, 2, 2},
    {"select", 52, ET_TM, OT_MATRIX, 2, 2},
    {"kv_select", 53, ET_TM, OT_MATRIX, 3, 3},
    {"minindex", 360, ET_TM, OT_MATRIX, 4, 4},
    {"order", 54, ET_REAL, OT_COLVEC, 2, 2},
    {"_collate", 55, ET_TM, OT_MATRIX, 2, 2},
    {"mindouble", 56, ET_REAL, OT_SCALAR, 0, 1},
    {"maxdouble", 57, ET_REAL, OT_SCALAR, 0, 1},
    {"smallestdouble", 58, ET_REAL, OT_SCALAR, 0, 1},
    {"epsilon", 59, ET_REAL, OT_SCALAR, 0, 1},
    {"missingof", 60, ET_TM, OT_MATRIX, 1, 1},
    {"byteorder", 61, ET_REAL, OT_SCALAR, 0, 0},
    {"abs", 12, ET_REAL, OT_MATRIX, 1, 1},
    {"exp", 15, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"ln", 14, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"log", 14, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"sqrt", 16, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"sin", 62, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"cos", 63, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"tan", 64, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"asinr", 65, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"acosr", 66, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"atanr", 67, ET_NUMERIC, OT_MATRIX, 1, 1},
    {"atan2", 68, ET_REAL, OT_MATRIX, 2, 2},
    {"lngamma", 69, ET_REAL, OT_MATRIX, 1, 1},
    {"factorial", 70, ET_REAL, OT_MATRIX, 1, 1},
    {"lnfactorial", 71, ET_REAL, OT_MATRIX, 1, 1},
    {"trunc", 72, ET_REAL, OT_MATRIX, 1, 1},
    {"round", 36, ET_REAL, OT_MATRIX, 1, 2},
    {"floor", 37, ET_REAL, OT_MATRIX, 1, 1},
    {"ceil", 38, ET_REAL, OT_MATRIX, 1, 1},
    {"mod", 39, ET_REAL, OT_MATRIX, 2, 2},
    {"comb", 73, ET_REAL, OT_MATRIX, 2, 2},
    {"digamma", 74, ET_REAL, OT_MATRIX, 1, 1},
    {"trigamma", 75, ET_REAL, OT_MATRIX, 1, 1},
    {"uniform", 76, ET_REAL, OT_MATRIX, 2, 2},
    {"uniformseed", 77, ET_TM, OT_MATRIX, 0, 1},
    {"chebyeval", 78, ET_REAL, OT_MATRIX, 2, 3},
    {"arg", 79, ET_REAL, OT_MATRIX, 1, 1},
    {"reldif", 80, ET_REAL, OT_MATRIX, 2, 2},
    {"mreldif", 81, ET_REAL, OT_SCALAR, 2, 2},
    {"mreldifsym", 82, ET_REAL, OT_SCALAR, 1, 1},
    {"mreldifre", 83, ET_REAL, OT_SCALAR, 2, 2},
    {"ghalton", 84, ET_REAL, OT_MATRIX, 3, 3},
    {"_ghk", 85, ET_REAL, OT_SCALAR, 4, 4},
    {"sum", 26, ET_REAL, OT_SCALAR, 1, 2},
    {"quadsum", 86, ET_REAL, OT_SCALAR, 1, 2},
    {"rowsum", 87, ET_REAL, OT_COLVEC, 1, 2},
    {"colsum", 88, ET_REAL, OT_ROWVEC, 1, 2},
    {"quadrowsum", 89, ET_REAL, OT_COLVEC, 1, 2},
    {"quadcolsum", 90, ET_REAL, OT_ROWVEC, 1, 2},
    {"rowminmax", 91, ET_REAL, OT_MATRIX, 1, 2},
    {"colminmax", 92, ET_REAL, OT_MATRIX, 1, 2},
    {"minmax", 93, ET_REAL, OT_ROWVEC, 1, 2},
    {"rowmaxabs", 94, ET_REAL, OT_COLVEC, 1, 1},
    {"colmaxabs", 95, ET_REAL, OT_ROWVEC, 1, 1},
    {"rowmissing", 96, ET_REAL, OT_COLVEC, 1, 1},
    {"colmissing", 97, ET_REAL, OT_ROWVEC, 1, 1},
    {"missing", 98, ET_REAL, OT_SCALAR, 1, 1},
    {"rownonmissing", 99, ET_REAL, OT_COLVEC, 1, 1},
    {"colnonmissing", 100, ET_REAL, OT_ROWVEC, 1, 1},
    {"nonmissing", 101, ET_REAL, OT_SCALAR, 1, 1},
    {"all", 102, ET_REAL, OT_SCALAR, 1, 1},
    {"any", 103, ET_REAL, OT_SCALAR, 1, 1},
    {"allof", 104, ET_REAL, OT_SCALAR, 2, 2},
    {"anyof", 105, ET_REAL, OT_SCALAR, 2, 2},
    {"cross", 106, ET_REAL, OT_MATRIX, 2, 6},
    {"crossdev", 107, ET_REAL, OT_MATRIX, 4, 8},
    {"quadcross", 108, ET_REAL, OT_MATRIX, 2, 6},
    {"quadcrossdev", 109, ET_REAL, OT_MATRIX, 4, 8},
    {"trace_AVBV", 110, ET_REAL, OT_SCALAR, 2, 2},
    {"trace_ABBAV", 111, ET_REAL, OT_SCALAR, 2, 2},
    {"strlen", 27, ET_REAL, OT_MATRIX, 1, 1},
    {"substr", 28, ET_STRING, OT_MATRIX, 2, 3},
    {"ascii", 112, ET_REAL, OT_ROWVEC, 1, 1},
    {"char", 113, ET_STRING, OT_SCALAR, 1, 1},
    {"strpos", 114, ET_REAL, OT_MATRIX, 2, 2},
    {"indexnot", 115, ET_REAL, OT_MATRIX, 2, 2},
    {"strlower", 116, ET_STRING, OT_MATRIX, 1, 1},
    {"strupper", 117, ET_STRING, OT_MATRIX, 1, 1},
    {"strltrim", 118, ET_STRING, OT_MATRIX, 1, 1},
    {"strrtrim", 119, ET_STRING, OT_MATRIX, 1, 1},
    {"strtrim", 120, ET_STRING, OT_MATRIX, 1, 1},
    {"stritrim", 121, ET_STRING, OT_MATRIX, 1, 1},
    {"strmatch", 122, ET_REAL, OT_MATRIX, 2, 2},
    {"strproper", 123, ET_STRING, OT_MATRIX, 1, 1},
    {"strreverse", 124, ET_STRING, OT_MATRIX, 1, 1},
    {"subinstr", 125, ET_STRING, OT_MATRIX, 3, 4},
    {"subinword", 126, ET_STRING, OT_MATRIX, 3, 4},
    {"strofreal", 29, ET_STRING, OT_MATRIX, 1, 2},
    {"_strtoreal", 127, ET_REAL, OT_MATRIX, 2, 2},
    {"tokens", 128, ET_STRING, OT_ROWVEC, 1, 2},
    {"regexm", 129, ET_REAL, OT_MATRIX, 2, 2},
    {"regexr", 130, ET_STRING, OT_MATRIX, 3, 3},
    {"regexs", 131, ET_STRING, OT_SCALAR, 0, 1},
    {"sprintf", 132, ET_STRING, OT_SCALAR, 1, 200},
    {"bufsub", 133, ET_STRING, OT_SCALAR, 3, 3},
    {"bufput", 134, ET_TM, OT_MATRIX, 4, 5},
    {"bufget", 135, ET_TM, OT_MATRIX, 3, 6},
    {"bufbfmtlen", 136, ET_REAL, OT_SCALAR, 1, 1},
    {"bufbfmtisnum", 137, ET_REAL, OT_SCALAR, 1, 1},
    {"invsym", 138, ET_REAL, OT_MATRIX, 1, 2},
    {"_invsym", 139, ET_TM, OT_MATRIX, 1, 2},
    {"ginvr", 140, ET_REAL, OT_MATRIX, 1, 2},
    {"_cholesky", 141, ET_TM, OT_MATRIX, 1, 1},
    {"_lud2_la", 142, ET_TM, OT_MATRIX, 3, 3},
    {"_luinv_la", 143, ET_REAL, OT_SCALAR, 1, 2},
    {"_lusolve_la", 144, ET_REAL, OT_SCALAR, 2, 3},
    {"_hqrdp_la", 145, ET_REAL, OT_SCALAR, 4, 4},
    {"_hqrdmult", 146, ET_TM, OT_MATRIX, 4, 4},
    {"_hqrdq1", 147, ET_REAL, OT_MATRIX, 2, 3},
    {"_svd_la", 148, ET_REAL, OT_SCALAR, 3, 3},
    {"_svd_2", 149, ET_REAL, OT_SCALAR, 2, 2},
    {"_eigen_la", 150, ET_REAL, OT_SCALAR, 6, 6},
    {"_symeigen_la", 151, ET_REAL, OT_SCALAR, 2, 2},
    {"_fft", 152, ET_TM, OT_MATRIX, 1, 1},
    {"_invfft", 153, ET_TM, OT_MATRIX, 1, 1},
    {"_makesymmetric", 154, ET_TM, OT_MATRIX, 1, 1},
    {"_editmissing", 155, ET_TM, OT_MATRIX, 2, 2},
    {"_editvalue", 156, ET_TM, OT_MATRIX, 3, 3},
    {"_fillmissing", 157, ET_TM, OT_MATRIX, 1, 1},
    {"Binomial", 158, ET_REAL, OT_MATRIX, 3, 3},
    {"binormal", 159, ET_REAL, OT_MATRIX, 3, 3},
    {"chi2", 160, ET_REAL, OT_MATRIX, 2, 2},
    {"chi2tail", 161, ET_REAL, OT_MATRIX, 2, 2},
    {"F", 162, ET_REAL, OT_MATRIX, 3, 3},
    {"Fden", 163, ET_REAL, OT_MATRIX, 3, 3},
    {"Ftail", 164, ET_REAL, OT_MATRIX, 3, 3},
    {"betaden", 165, ET_REAL, OT_MATRIX, 3, 3},
    {"gammaden", 166, ET_REAL, OT_MATRIX, 4, 4},
    {"gammap", 167, ET_REAL, OT_MATRIX, 2, 2},
    {"ibeta", 168, ET_REAL, OT_MATRIX, 3, 3},
    {"invbinomial", 169, ET_REAL, OT_MATRIX, 3, 3},
    {"invchi2", 170, ET_REAL, OT_MATRIX, 2, 2},
    {"invchi2tail", 171, ET_REAL, OT_MATRIX, 2, 2},
    {"invF", 172, ET_REAL, OT_MATRIX, 3, 3},
    {"invFtail", 173, ET_REAL, OT_MATRIX, 3, 3},
    {"invgammap", 174, ET_REAL, OT_MATRIX, 2, 2},
    {"invibeta", 175, ET_REAL, OT_MATRIX, 3, 3},
    {"invnchi2", 176, ET_REAL, OT_MATRIX, 3, 3},
    {"invnFtail", 177, ET_REAL, OT_MATRIX, 4, 4},
    {"invnibeta", 178, ET_REAL, OT_MATRIX, 4, 4},
    {"invnormal", 179, ET_REAL, OT_MATRIX, 1, 1},
    {"invttail", 180, ET_REAL, OT_MATRIX, 2, 2},
    {"lnnormal", 181, ET_REAL, OT_MATRIX, 1, 1},
    {"lnnormalden", 182, ET_REAL, OT_MATRIX, 1, 3},
    {"nbetaden", 183, ET_REAL, OT_MATRIX, 4, 4},
    {"nchi2", 184, ET_REAL, OT_MATRIX, 3, 3},
    {"nFden", 185, ET_REAL, OT_MATRIX, 4, 4},
    {"nFtail", 186, ET_REAL, OT_MATRIX, 4, 4},
    {"nibeta", 187, ET_REAL, OT_MATRIX, 4, 4},
    {"normal", 188, ET_REAL, OT_MATRIX, 1, 1},
    {"normalden", 189, ET_REAL, OT_MATRIX, 1, 3},
    {"npnchi2", 190, ET_REAL, OT_MATRIX, 3, 3},
    {"tden", 191, ET_REAL, OT_MATRIX, 2, 2},
    {"ttail", 192, ET_REAL, OT_MATRIX, 2, 2},
    {"dgammapda", 193, ET_REAL, OT_MATRIX, 2, 2},
    {"dgammapdx", 194, ET_REAL, OT_MATRIX, 2, 2},
    {"dgammapdada", 195, ET_REAL, OT_MATRIX, 2, 2},
    {"dgammapdadx", 196, ET_REAL, OT_MATRIX, 2, 2},
    {"dgammapdxdx", 197, ET_REAL, OT_MATRIX, 2, 2},
    {"date", 198, ET_REAL, OT_MATRIX, 2, 3},
    {"mdy", 199, ET_REAL, OT_MATRIX, 3, 3},
    {"day", 200, ET_REAL, OT_MATRIX, 1, 1},
    {"month", 201, ET_REAL, OT_MATRIX, 1, 1},
    {"year", 202, ET_REAL, OT_MATRIX, 1, 1},
    {"yofd", 203, ET_REAL, OT_MATRIX, 1, 1},
    {"dow", 204, ET_REAL, OT_MATRIX, 1, 1},
    {"doy", 205, ET_REAL, OT_MATRIX, 1, 1},
    {"week", 206, ET_REAL, OT_MATRIX, 1, 1},
    {"quarter", 207, ET_REAL, OT_MATRIX, 1, 1},
    {"halfyear", 208, ET_REAL, OT_MATRIX, 1, 1},
    {"yearly", 209, ET_REAL, OT_MATRIX, 2, 3},
    {"halfyearly", 210, ET_REAL, OT_MATRIX, 2, 3},
    {"quarterly", 211, ET_REAL, OT_MATRIX, 2, 3},
    {"monthly", 212, ET_REAL, OT_MATRIX, 2, 3},
    {"weekly", 213, ET_REAL, OT_MATRIX, 2, 3},
    {"dofy", 214, ET_REAL, OT_MATRIX, 1, 1},
    {"dofh", 215, ET_REAL, OT_MATRIX, 1, 1},
    {"dofq", 216, ET_REAL, OT_MATRIX, 1, 1},
    {"dofm", 217, ET_REAL, OT_MATRIX, 1, 1},
    {"dofw", 218, ET_REAL, OT_MATRIX, 1, 1},
    {"dofd", 219, ET_REAL, OT_MATRIX, 1, 1},
    {"hofd", 220, ET_REAL, OT_MATRIX, 1, 1},
    {"qofd", 221, ET_REAL, OT_MATRIX, 1, 1},
    {"mofd", 222, ET_REAL, OT_MATRIX, 1, 1},
    {"wofd", 223, ET_REAL, OT_MATRIX, 1, 1},
    {"yw", 224, ET_REAL, OT_MATRIX, 2, 2},
    {"ym", 225, ET_REAL, OT_MATRIX, 2, 2},
    {"yq", 226, ET_REAL, OT_MATRIX, 2, 2},
    {"yh", 227, ET_REAL, OT_MATRIX, 2, 2},
    {"fopen", 228, ET_REAL, OT_SCALAR, 2, 3},
    {"_fopen", 229, ET_REAL, OT_SCALAR, 2, 3},
    {"fclose", 230, ET_TM, OT_MATRIX, 1, 1},
    {"_fclose", 231, ET_REAL, OT_SCALAR, 1, 1},
    {"fgetnl", 232, ET_STRING, OT_SCALAR, 1, 2},
    {"_fgetnl", 233, ET_STRING, OT_SCALAR, 1, 2},
    {"fget", 234, ET_STRING, OT_SCALAR, 1, 2},
    {"_fget", 235, ET_STRING, OT_SCALAR, 1, 2},
    {"fread", 236, ET_STRING, OT_SCALAR, 2, 2},
    {"_fread", 237, ET_STRING, OT_SCALAR, 2, 2},
    {"fstatus", 238, ET_REAL, OT_SCALAR, 1, 1},
    {"fwrite", 239, ET_TM, OT_MATRIX, 2, 2},
    {"_fwrite", 240, ET_REAL, OT_SCALAR, 2, 2},
    {"fput", 241, ET_TM, OT_MATRIX, 2, 2},
    {"_fput", 242, ET_REAL, OT_SCALAR, 2, 2},
    {"fseek", 243, ET_TM, OT_MATRIX, 3, 3},
    {"_fseek", 244, ET_REAL, OT_SCALAR, 3, 3},
    {"ftruncate", 245, ET_TM, OT_MATRIX, 1, 1},
    {"_ftruncate", 246, ET_REAL, OT_SCALAR, 1, 1},
    {"tmpfilename", 247, ET_STRING, OT_SCALAR, 0, 0},
    {"unlink", 248, ET_TM, OT_MATRIX, 1, 1},
    {"_unlink", 249, ET_REAL, OT_SCALAR, 1, 1},
    {"fputmatrix", 250, ET_TM, OT_MATRIX, 2, 2},
    {"_fputmatrix", 251, ET_REAL, OT_SCALAR, 2, 2},
    {"fgetmatrix", 252, ET_TM, OT_MATRIX, 1, 1},
    {"_fgetmatrix", 253, ET_TM, OT_MATRIX, 1, 1},
    {"_chdir", 254, ET_REAL, OT_SCALAR, 1, 1},
    {"_rmdir", 255, ET_REAL, OT_SCALAR, 1, 1},
    {"_mkdir", 256, ET_REAL, OT_SCALAR, 1, 2},
    {"pwd", 257, ET_STRING, OT_SCALAR, 0, 0},
    {"dir", 258, ET_STRING, OT_COLVEC, 3, 4},
    {"direxists", 259, ET_REAL, OT_SCALAR, 1, 1},
    {"pathisurl", 260, ET_REAL, OT_SCALAR, 1, 1},
    {"pathisabs", 261, ET_REAL, OT_SCALAR, 1, 1},
    {"pathasciisuffix", 262, ET_REAL, OT_SCALAR, 1, 1},
    {"pathkorvusuffix", 263, ET_REAL, OT_SCALAR, 1, 1},
    {"pathsuffix", 264, ET_STRING, OT_SCALAR, 1, 1},
    {"pathrmsuffix", 265, ET_STRING, OT_SCALAR, 1, 1},
    {"pathbasename", 266, ET_STRING, OT_SCALAR, 1, 1},
    {"pathjoin", 267, ET_STRING, OT_SCALAR, 2, 2},
    {"adosubdir", 268, ET_STRING, OT_SCALAR, 1, 1},
    {"printf", 23, ET_TM, OT_MATRIX, 1, 200},
    {"errprintf", 22, ET_TM, OT_MATRIX, 1, 200},
    {"display", 35, ET_TM, OT_MATRIX, 1, 2},
    {"displayas", 269, ET_TM, OT_MATRIX, 1, 1},
    {"displayflush", 270, ET_TM, OT_MATRIX, 0, 0},
    {"more", 271, ET_TM, OT_MATRIX, 0, 0},
    {"error", 30, ET_TM, OT_MATRIX, 1, 1},
    {"_error", 31, ET_TM, OT_MATRIX, 1, 2},
    {"exit", 5, ET_TM, OT_MATRIX, 0, 1},
    {"args", 32, ET_REAL, OT_SCALAR, 0, 0},
    {"callersversion", 272, ET_REAL, OT_SCALAR, 0, 0},
    {"korvuversion", 273, ET_REAL, OT_SCALAR, 0, 0},
    {"korvusetversion", 274, ET_TM, OT_MATRIX, 1, 1},
    {"korvu", 33, ET_TM, OT_MATRIX, 1, 2},
    {"_korvu", 34, ET_REAL, OT_SCALAR, 1, 2},
    {"setbreakintr", 275, ET_REAL, OT_SCALAR, 1, 1},
    {"querybreakintr", 276, ET_REAL, OT_SCALAR, 0, 0},
    {"breakkey", 277, ET_REAL, OT_SCALAR, 0, 0},
    {"breakkeyreset", 278, ET_REAL, OT_SCALAR, 0, 0},
    {"favorspeed", 279, ET_REAL, OT_SCALAR, 0, 0},
    {"timer_clear", 280, ET_TM, OT_MATRIX, 0, 1},
    {"timer_on", 281, ET_TM, OT_MATRIX, 1, 1},
    {"timer_off", 282, ET_TM, OT_MATRIX, 1, 1},
    {"timer_value", 283, ET_REAL, OT_ROWVEC, 1, 1},
    {"opcount", 284, ET_REAL, OT_SCALAR, 0, 0},
    {"sys_linkcount", 285, ET_REAL, OT_SCALAR, 1, 1},
    {"sys_memory", 286, ET_REAL, OT_SCALAR, 0, 0},
    {"lumo_representation", 287, ET_TM, OT_MATRIX, 1, 1},
    {"_testflopin", 288, ET_TM, OT_MATRIX, 1, 1},
    {"_testflopout", 289, ET_TM, OT_MATRIX, 1, 1},
    {"findexternal", 290, ET_POINTER, OT_SCALAR, 1, 1},
    {"crexternal", 291, ET_POINTER, OT_SCALAR, 1, 1},
    {"rmexternal", 292, ET_TM, OT_MATRIX, 1, 1},
    {"direxternal", 293, ET_STRING, OT_COLVEC, 1, 1},
    {"valofexternal", 294, ET_TM, OT_MATRIX, 1, 1},
    {"kv_nvar", 295, ET_REAL, OT_SCALAR, 0, 0},
    {"kv_nobs", 296, ET_REAL, OT_SCALAR, 0, 0},
    {"kv_data", 297, ET_REAL, OT_MATRIX, 2, 3},
    {"_kv_data", 298, ET_REAL, OT_MATRIX, 2, 3},
    {"kv_sdata", 299, ET_STRING, OT_MATRIX, 2, 3},
    {"_kv_sdata", 300, ET_STRING, OT_MATRIX, 2, 3},
    {"kv_store", 301, ET_TM, OT_MATRIX, 3, 4},
    {"_kv_store", 302, ET_REAL, OT_SCALAR, 3, 4},
    {"kv_sstore", 303, ET_TM, OT_MATRIX, 3, 4},
    {"_kv_sstore", 304, ET_REAL, OT_SCALAR, 3, 4},
    {"kv_view", 305, ET_TM, OT_MATRIX, 3, 4},
    {"kv_sview", 306, ET_TM, OT_MATRIX, 3, 4},
    {"kv_subview", 307, ET_TM, OT_MATRIX, 4, 4},
    {"kv_viewvars", 308, ET_REAL, OT_ROWVEC, 1, 1},
    {"kv_viewobs", 309, ET_REAL, OT_COLVEC, 1, 1},
    {"kv_varindex", 310, ET_REAL, OT_ROWVEC, 1, 2},
    {"_kv_varindex", 311, ET_REAL, OT_ROWVEC, 1, 2},
    {"kv_varname", 312, ET_STRING, OT_ROWVEC, 1, 1},
    {"kv_tsrevar", 313, ET_REAL, OT_ROWVEC, 1, 2},
    {"kv_addobs", 314, ET_TM, OT_MATRIX, 1, 1},
    {"_kv_addobs", 315, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_addvar", 316, ET_REAL, OT_ROWVEC, 2, 3},
    {"_kv_addvar", 317, ET_REAL, OT_ROWVEC, 2, 3},
    {"kv_tempname", 318, ET_STRING, OT_COLVEC, 0, 1},
    {"kv_tempfilename", 319, ET_STRING, OT_COLVEC, 0, 1},
    {"kv_dropvar", 320, ET_TM, OT_MATRIX, 1, 1},
    {"kv_keepvar", 321, ET_TM, OT_MATRIX, 1, 1},
    {"kv_dropobsin", 322, ET_TM, OT_MATRIX, 1, 1},
    {"kv_dropobsif", 323, ET_TM, OT_MATRIX, 1, 1},
    {"kv_keepobsin", 324, ET_TM, OT_MATRIX, 1, 1},
    {"kv_keepobsif", 325, ET_TM, OT_MATRIX, 1, 1},
    {"kv_updata", 326, ET_REAL, OT_SCALAR, 0, 1},
    {"kv_vartype", 327, ET_STRING, OT_SCALAR, 1, 1},
    {"kv_isnumvar", 328, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_isstrvar", 329, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_varrename", 330, ET_TM, OT_MATRIX, 2, 2},
    {"kv_varformat", 331, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_isfmt", 332, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_isnumfmt", 333, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_isstrfmt", 334, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_isname", 335, ET_REAL, OT_SCALAR, 1, 2},
    {"kv_varlabel", 336, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_varvaluelabel", 337, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_vlexists", 338, ET_REAL, OT_SCALAR, 1, 1},
    {"kv_vldrop", 339, ET_TM, OT_MATRIX, 1, 1},
    {"kv_vlmap", 340, ET_STRING, OT_MATRIX, 2, 2},
    {"kv_vlsearch", 341, ET_REAL, OT_MATRIX, 2, 2},
    {"kv_vlload", 342, ET_TM, OT_MATRIX, 3, 3},
    {"kv_vlmodify", 343, ET_REAL, OT_SCALAR, 3, 3},
    {"kv_rclear", 344, ET_TM, OT_MATRIX, 0, 0},
    {"kv_eclear", 345, ET_TM, OT_MATRIX, 0, 0},
    {"kv_sclear", 346, ET_TM, OT_MATRIX, 0, 0},
    {"kv_local", 347, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_global", 348, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_numscalar", 349, ET_REAL, OT_SCALAR, 1, 2},
    {"kv_strscalar", 350, ET_STRING, OT_SCALAR, 1, 2},
    {"kv_matrix", 351, ET_REAL, OT_MATRIX, 1, 2},
    {"kv_matrixrowstripe", 352, ET_STRING, OT_MATRIX, 1, 2},
    {"kv_matrixcolstripe", 353, ET_STRING, OT_MATRIX, 1, 2},
    {"kv_replacematrix", 354, ET_TM, OT_MATRIX, 2, 2},
    {"kv_dir", 355, ET_STRING, OT_COLVEC, 2, 3},
    {"kv_macroexpand", 356, ET_STRING, OT_SCALAR, 1, 1},
    {"_kv_macroexpand", 357, ET_REAL, OT_SCALAR, 2, 2},
    {"_svy", 358, ET_TM, OT_MATRIX, 1, 12},
    {"_robust", 359, ET_TM, OT_MATRIX, 1, 12},
    {"_kv_tsrevar", 361, ET_REAL, OT_ROWVEC, 1, 2},
};

inline constexpr int MBI_NROWS = static_cast<int>(sizeof m_bitab / sizeof m_bitab[0]);
static_assert(MBI_NROWS == 362);

const MBuiltin* m_findbuiltin(const char* name) {
    for (const MBuiltin& b : m_bitab)
        if (!strcmp(b.name, name)) return &b;
    return nullptr;
}

const char* m_builtinname(int index) {
    for (const MBuiltin& b : m_bitab)
        if (b.index == index) return b.name;
    return "?";
}

int bi_index(const char* name) {
    const MBuiltin* b = m_findbuiltin(name);
    return b ? b->index : 0;
}

int bi_nrows() {
    return MBI_NROWS;
}

static MBiFn bitab[MBI_MAXINDEX];
static char biid[MBI_MAXINDEX][40];
static bool bilinked = false;

static void bilink() {
    bi_link_shape(bitab);
    bi_link_elem(bitab);
    bi_link_summ(bitab);
    bi_link_str(bitab);
    bi_link_la(bitab);
    bi_link_dist(bitab);
    bi_link_dates(bitab);
    bi_link_files(bitab);
    bi_link_output(bitab);
    bi_link_control(bitab);
    bi_link_extern(bitab);
    bi_link_dataset(bitab);
    bi_link_results(bitab);
    bi_link_la2(bitab);
    bi_link_misc2(bitab);
    bi_link_sys(bitab);
    bi_link_buf(bitab);
    bi_link_sim(bitab);
    bi_link_sandwich(bitab);
    bi_link_dsmore(bitab);
    bitab[0] = nullptr; // names a family tried that the table lacks
    for (const MBuiltin& b : m_bitab) snprintf(biid[b.index], sizeof biid[0], "%s()", b.name);
    bilinked = true;
}

MBiFn m_bifn(int index) {
    if (!bilinked) bilink();
    if (index <= 0 || index >= MBI_MAXINDEX) return nullptr;
    return bitab[index];
}

const char* m_biid(int index) {
    if (!bilinked) bilink();
    if (index <= 0 || index >= MBI_MAXINDEX) return "?";
    return biid[index];
}

int bi_nwritten() {
    if (!bilinked) bilink();
    int k = 0;
    for (const MBuiltin& b : m_bitab)
        if (bitab[b.index]) k++;
    return k;
}

} // namespace korvu
