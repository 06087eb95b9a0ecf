#include "kernel/cmds/builtins.h"

#include <cstdio>

#include "class/clslang.h"
#include "data/area/areacmds.h"
#include "data/area/dataarea.h"
#include "data/combine/combine.h"
#include "data/dta/dta.h"
#include "data/expr/expr.h"
#include "data/groups/groups.h"
#include "data/io/io.h"
#include "data/io/textio.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/select/generate.h"
#include "data/sort/sort.h"
#include "data/vars/char.h"
#include "data/vars/varcmds.h"
#include "kernel/cmds/syscmds.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/argparse.h"
#include "kernel/program/program.h"
#include "lumo/lumo.h"
#include "output/log/log.h"
#include "output/spout.h"
#include "results/matrix/matrix.h"
#include "results/regress/regress.h"
#include "results/settings.h"
#include "results/stores.h"
#include "results/summarize.h"
#include "results/tables/tables.h"
#include "ui/help.h"

namespace korvu {

// Rows in their order of test: the order matters, since an abbreviation
// resolves to the first row it matches. Columns: word, least abbreviation,
// branch (the first character that reaches the row; the matrix-language rows
// are listed with `m` but reached by their own first letter), version gate
// (from, below), by-able, handler and its argument. A null handler is a
// command not built yet.
static constexpr Builtin builtin_table[] = {
    {"_asis", 5, '_', 0, 0, 0, nullptr, 0},
    {"_byobs", 6, '_', 0, 0, 0, nullptr, 0},
    {"_clogit", 4, '_', 0, 0, 1, nullptr, 0},
    {"_clogit_lf", 10, '_', 0, 0, 0, nullptr, 0},
    {"_cls", 4, '_', 0, 0, 0, clscmd_direct, 0},
    {"_cluster", 8, '_', 0, 0, 0, nullptr, 0},
    {"_clustermat", 11, '_', 0, 0, 0, nullptr, 0},
    {"_cnreg", 6, '_', 0, 0, 1, nullptr, 0},
    {"_describe", 9, '_', 0, 0, 0, describecmd, 0},
    {"_dialog", 7, '_', 0, 0, 0, nullptr, 0},
    {"_estimates", 4, '_', 800, 0, 0, _estimatescmd, 0},
    {"_test", 5, '_', 0, 0, 0, testcmd, 0},
    {"_findhlpalias", 12, '_', 0, 0, 0, usfindhlpalias, 0},
    {"_groups", 7, '_', 0, 0, 0, groupscmd, 0},
    {"_GEEBT", 5, '_', 0, 0, 0, nullptr, 0},
    {"_GEEUC", 5, '_', 0, 0, 0, nullptr, 0},
    {"_GEERC", 5, '_', 0, 0, 0, nullptr, 0},
    {"_gllamm_fl", 9, '_', 0, 0, 0, nullptr, 0},
    {"_gllamm_ord", 9, '_', 0, 0, 0, nullptr, 0},
    {"_gllamm_lnu", 9, '_', 0, 0, 0, nullptr, 0},
    {"_gllamm_nom", 9, '_', 0, 0, 0, nullptr, 0},
    {"_huber", 3, '_', 0, 0, 0, hubercmd, 0},
    {"_ktau", 5, '_', 0, 0, 0, nullptr, 0},
    {"_logit", 6, '_', 0, 0, 1, nullptr, 0},
    {"_merge", 4, '_', 0, 0, 0, mergecmd, 0},
    {"_mlmatbysum", 11, '_', 0, 0, 0, nullptr, 0},
    {"_mlogit", 7, '_', 0, 0, 1, nullptr, 0},
    {"_natscale", 9, '_', 0, 0, 0, nullptr, 0},
    {"_ologit", 7, '_', 0, 0, 1, nullptr, 0},
    {"_oprobit", 8, '_', 0, 0, 1, nullptr, 0},
    {"_parse", 6, '_', 0, 0, 0, nullptr, 0},
    {"_predict", 8, '_', 0, 0, 0, predictcmd, 0},
    {"_pctile", 7, '_', 0, 0, 0, nullptr, 0},
    {"_probit", 7, '_', 0, 0, 1, nullptr, 0},
    {"_repart", 7, '_', 0, 0, 0, repartcmd, 0},
    {"_regress", 8, '_', 0, 0, 1, regresscmd, 0},
    {"_return", 4, '_', 0, 0, 0, _returncmd, 0},
    {"_robust", 7, '_', 0, 0, 0, robustcmd, 0},
    {"_rotate_mat", 11, '_', 0, 0, 0, nullptr, 0},
    {"_rmcoll", 7, '_', 0, 0, 0, rmcollcmd, 0},
    {"_svy", 4, '_', 0, 0, 0, nullptr, 0},
    {"_tobit", 6, '_', 0, 0, 1, nullptr, 0},
    {"_tsnatscale", 9, '_', 0, 0, 0, nullptr, 0},
    {"_XTRENORM", 9, '_', 0, 0, 0, nullptr, 0},
    {"_XTLLCalc", 6, '_', 0, 0, 0, nullptr, 0},
    {"_GetAdap", 6, '_', 0, 0, 0, nullptr, 0},
    {"_GetRho", 5, '_', 0, 0, 0, nullptr, 0},
    {"_GetQuad", 4, '_', 0, 0, 0, nullptr, 0},
    {"_KDE", 4, '_', 0, 0, 0, nullptr, 0},
    {"_KDE2", 5, '_', 0, 0, 0, nullptr, 0},
    {"_LOWESS", 7, '_', 0, 0, 0, nullptr, 0},
    {"HELPCHK", 7, '_', 0, 0, 0, nullptr, 0},
    {"_kalman1", 8, '_', 0, 0, 0, nullptr, 0},
    {"_qreg", 5, '_', 0, 0, 0, nullptr, 0},
    {"_xtarm", 6, '_', 0, 0, 0, nullptr, 0},
    {"_xtmka", 6, '_', 0, 0, 0, nullptr, 0},
    {"_xtmkz", 6, '_', 0, 0, 0, nullptr, 0},
    {"_xtzw", 4, '_', 0, 0, 0, nullptr, 0},
    {"_xtzv", 4, '_', 0, 0, 0, nullptr, 0},
    {"_xtwhw", 5, '_', 0, 0, 0, nullptr, 0},
    {"_xta2", 4, '_', 0, 0, 0, nullptr, 0},
    {"_sfevdstd", 8, '_', 0, 0, 0, nullptr, 0},
    {"_varfstd", 7, '_', 0, 0, 0, nullptr, 0},
    {"_fevdstd", 7, '_', 0, 0, 0, nullptr, 0},
    // compiled cores of the data-management ado-files, typed in full
    {"_reshape", 8, '_', 0, 0, 0, reshapecmd, 0},
    {"_recode", 7, '_', 0, 0, 0, recodecmd, 0},
    {"_destring", 9, '_', 0, 0, 0, destringcmd, 0},
    {"_tostring", 9, '_', 0, 0, 0, tostringcmd, 0},
    {"_tabstat", 8, '_', 0, 0, 0, tabstatcmd, 0},
    {"_codebook", 9, '_', 0, 0, 0, codebookcmd, 0},
    {"_xpose", 6, '_', 0, 0, 0, xposecmd, 0},
    {"_ds", 3, '_', 0, 0, 0, dscmd, 0},
    {"_table", 6, '_', 0, 0, 0, tablecmd, 0},
    {"about", 5, 'a', 0, 0, 0, nullptr, 0},
    {"about_dlg", 9, 'a', 0, 0, 0, nullptr, 0},
    {"ado", 3, 'a', 0, 0, 0, nullptr, 0},
    {"append", 2, 'a', 0, 0, 0, appendcmd, 0},
    {"anova", 2, 'a', 0, 0, 1, nullptr, 0},
    {"anovadef", 8, 'a', 0, 0, 0, nullptr, 0},
    {"args", 4, 'a', 0, 0, 0, kvargs, 0},
    {"assert", 2, 'a', 0, 0, 1, assertcmd, 0},
    {"by", 2, 'b', 0, 0, 0, byprefix, 0},
    {"bysort", 3, 'b', 0, 0, 0, byprefix, 1},
    {"break", 5, 'b', 0, 0, 0, prefix_break, 1},
    {"browse", 2, 'b', 0, 0, 0, nullptr, 0},
    {"beep", 2, 'b', 0, 0, 0, nullptr, 0},
    {"cat", 3, 'c', 0, 0, 0, typecmd, 0},
    {"capture", 3, 'c', 0, 0, 0, prefix_capture, 0},
    {"chdir", 5, 'c', 0, 0, 0, cdcmd, 0},
    {"cd", 2, 'c', 0, 0, 0, cdcmd, 0},
    {"char", 4, 'c', 0, 0, 0, charcmd, 0},
    {"checksum", 8, 'c', 0, 0, 0, nullptr, 0},
    {"chelp", 2, 'c', 0, 0, 0, helpcmd, 0},
    {"class", 5, 'c', 0, 0, 0, stclass, 0},
    {"clear", 5, 'c', 0, 0, 0, clearcmd, 0},
    {"c_local", 7, 'c', 0, 0, 0, macgen, 7},
    {"compress", 8, 'c', 0, 0, 0, compresscmd, 0},
    {"confirm", 4, 'c', 0, 0, 0, confirm, 0},
    {"constraint", 4, 'c', 0, 0, 0, constraintcmd, 0},
    {"continue", 8, 'c', 0, 0, 0, continuecmd, 0},
    {"copy", 4, 'c', 0, 0, 0, copycmd, 0},
    {"cp", 2, 'c', 600, 0, 0, copycmd, 0},
    {"count", 3, 'c', 0, 0, 1, countcmd, 0},
    {"cox", 3, 'c', 0, 0, 1, nullptr, 0},
    {"correlate", 3, 'c', 0, 0, 1, correlatecmd, 0},
    {"cmdlog", 6, 'c', 0, 0, 0, logcmd, 1},
    {"creturn", 4, 'c', 0, 0, 0, creturncmd, 0},
    {"clist", 2, 'c', 0, 0, 1, nullptr, 0},
    {"debug", 5, 'd', 0, 0, 0, nullptr, 0},
    {"decode", 3, 'd', 0, 0, 0, decodecmd, 0},
    {"dir", 3, 'd', 0, 0, 0, dircmd, 0},
    {"display", 2, 'd', 0, 0, 0, display, 0},
    {"discard", 7, 'd', 0, 0, 0, discard, 0},
    {"do_dlg", 6, 'd', 0, 0, 0, nullptr, 0},
    {"do", 2, 'd', 0, 0, 0, docmd, 0},
    {"drop", 4, 'd', 0, 0, 1, drop, 0},
    {"describe", 1, 'd', 0, 0, 0, describecmd, 0},
    {"doedit", 3, 'd', 0, 0, 0, nullptr, 0},
    {"datatimer", 8, 'd', 0, 0, 0, nullptr, 0},
    {"di_g", 4, 'd', 0, 0, 0, nullptr, 0},
    {"datasignature", 7, 'd', 0, 0, 0, nullptr, 0},
    {"edit", 2, 'e', 0, 0, 0, nullptr, 0},
    {"else", 4, 'e', 0, 0, 0, elsecmd, 0},
    {"encode", 2, 'e', 0, 0, 0, encodecmd, 0},
    {"erase", 5, 'e', 0, 0, 0, erasecmd, 0},
    {"error", 3, 'e', 0, 0, 0, errcmd_handler, 0},
    {"estimates", 3, 'e', 0, 800, 0, estimatescmd, 0},
    {"ereturn", 4, 'e', 800, 0, 0, ereturncmd, 0},
    {"exit", 1, 'e', 0, 0, 0, goexit, 0},
    {"expand", 6, 'e', 0, 0, 0, expandcmd, 0},
    {"example", 7, 'e', 0, 0, 0, examplecmd, 0},
    {"export", 6, 'e', 0, 0, 0, exportcmd, 0},
    {"forvalues", 4, 'f', 0, 0, 0, forvals, 0},
    {"foreach", 7, 'f', 0, 0, 0, foreach, 0},
    {"factor_cmd8", 11, 'f', 0, 0, 1, nullptr, 0},
    {"fdadescribe", 6, 'f', 0, 0, 0, nullptr, 0},
    {"fdasave", 6, 'f', 0, 0, 0, nullptr, 0},
    {"fdause", 6, 'f', 0, 0, 0, nullptr, 0},
    {"fft", 3, 'f', 0, 0, 1, nullptr, 0},
    {"format", 4, 'f', 0, 0, 0, formatcmd, 0},
    {"file", 4, 'f', 0, 0, 0, filecmd, 0},
    {"filefilter", 5, 'f', 0, 0, 0, nullptr, 0},
    {"flist", 2, 'f', 0, 0, 1, nullptr, 0},
    {"generate", 1, 'g', 0, 0, 1, gen, 0},
    {"gettoken", 8, 'g', 0, 0, 0, kvgettok, 0},
    {"global", 2, 'g', 0, 0, 0, macgen, 2},
    {"gdi", 3, 'g', 0, 0, 0, nullptr, 0},
    {"gph", 3, 'g', 0, 800, 0, nullptr, 0},
    {"graph", 2, 'g', 0, 800, 1, nullptr, 0},
    {"graph7", 6, 'g', 0, 0, 0, nullptr, 0},
    {"gr7", 3, 'g', 0, 0, 0, nullptr, 0},
    {"gprefs", 6, 'g', 0, 0, 0, nullptr, 0},
    {"haver", 5, 'h', 0, 0, 0, nullptr, 0},
    {"hexdump", 7, 'h', 0, 0, 0, nullptr, 0},
    {"include", 7, 'i', 0, 0, 0, docmd, 4},
    {"if", 2, 'i', 0, 0, 0, ifcmd, 0},
    {"infile", 3, 'i', 0, 0, 0, infilecmd, 0},
    {"infix", 5, 'i', 0, 0, 0, infixcmd, 0},
    {"input", 3, 'i', 0, 0, 0, inputcmd, 0},
    {"insheet", 4, 'i', 0, 0, 0, insheetcmd, 0},
    {"import", 6, 'i', 0, 0, 0, importcmd, 0},
    {"inspect", 3, 'i', 0, 0, 1, inspectcmd, 0},
    {"keep", 4, 'k', 0, 0, 1, drop, 1},
    {"local", 3, 'l', 0, 0, 0, macgen, 1},
    {"list", 1, 'l', 0, 0, 1, listcmd, 0},
    {"ls", 2, 'l', 0, 0, 0, dircmd, 0},
    {"label", 2, 'l', 0, 0, 0, labelcmd, 0},
    {"labeldefine_dlg", 15, 'l', 0, 0, 0, nullptr, 0},
    {"lookup", 2, 'l', 0, 0, 0, searchcmd, 0},
    {"log", 3, 'l', 0, 0, 0, logcmd, 0},
    {"log_dlg", 7, 'l', 0, 0, 0, nullptr, 0},
    {"macro", 2, 'm', 0, 0, 0, macro, 0},
    {"man", 3, 'm', 0, 0, 0, helpcmd, 0},
    {"manova", 4, 'm', 0, 0, 1, nullptr, 0},
    {"manovatest", 10, 'm', 0, 0, 0, nullptr, 0},
    {"mark", 4, 'm', 0, 0, 0, markcmd, 0},
    {"markout", 7, 'm', 0, 0, 0, markout, 0},
    {"marksample", 10, 'm', 0, 0, 0, markscmd, 0},
    {"markin", 6, 'm', 0, 0, 0, markin, 0},
    {"m", 1, 'm', 0, 0, 0, lumocmd, 0},
    {"lumo", 4, 'l', 0, 0, 0, lumocmd, 0},
    {"lumo_clear", 10, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_describe", 13, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_drop", 9, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_llib", 9, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_memory", 11, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_mosave", 11, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_rename", 11, 'l', 0, 0, 0, nullptr, 0},
    {"lumo_which", 10, 'l', 0, 0, 0, nullptr, 0},
    {"mat_put_rr", 10, 'm', 0, 0, 0, nullptr, 0},
    {"matrix", 3, 'm', 0, 0, 0, matrixcmd, 0},
    {"memory", 6, 'm', 0, 0, 0, memorycmd, 0},
    {"mkdir", 5, 'm', 0, 0, 0, mkdircmd, 0},
    {"mleval", 6, 'm', 0, 0, 0, nullptr, 0},
    {"mlsum", 5, 'm', 0, 0, 0, nullptr, 0},
    {"mlvecsum", 8, 'm', 0, 0, 0, nullptr, 0},
    {"mlmatsum", 8, 'm', 0, 0, 0, nullptr, 0},
    {"mlmatbysum", 8, 'm', 0, 0, 0, nullptr, 0},
    {"more", 3, 'm', 0, 0, 0, morecmd, 0},
    {"move", 3, 'm', 0, 0, 0, stmove, 0},
    {"noisily", 1, 'n', 0, 0, 0, prefix_noisily, 0},
    {"net", 3, 'n', 0, 0, 0, nullptr, 0},
    {"news", 4, 'n', 0, 0, 0, nullptr, 0},
    {"nobreak", 7, 'n', 0, 0, 0, prefix_break, 0},
    {"numlist", 7, 'n', 600, 0, 0, numlist, 0},
    {"notes", 4, 'n', 0, 0, 0, notescmd, 0},
    {"notes_dlg", 9, 'n', 0, 0, 0, nullptr, 0},
    {"odbc", 4, 'o', 0, 0, 0, nullptr, 0},
    {"odbcload_dlg", 12, 'o', 0, 0, 0, nullptr, 0},
    {"oldgprefs", 9, 'o', 0, 0, 0, nullptr, 0},
    {"oneway", 2, 'o', 0, 0, 1, nullptr, 0},
    {"order", 5, 'o', 0, 0, 0, ordercmd, 0},
    {"outfile", 2, 'o', 0, 0, 0, outfilecmd, 0},
    {"outsheet", 4, 'o', 0, 0, 0, outsheetcmd, 0},
    {"pref", 4, 'p', 0, 0, 0, nullptr, 0},
    {"parse", 3, 'p', 0, 0, 0, kvparse, 0},
    {"plot", 2, 'p', 0, 0, 1, nullptr, 0},
    {"plugin", 4, 'p', 0, 0, 0, nullptr, 0},
    {"postfile", 8, 'p', 0, 0, 0, postfilecmd, 0},
    {"post", 4, 'p', 0, 0, 0, postcmd, 0},
    {"postclose", 9, 'p', 0, 0, 0, postclosecmd, 0},
    {"postutil", 8, 'p', 0, 0, 0, nullptr, 0},
    {"preserve", 8, 'p', 0, 0, 0, preservecmd, 0},
    {"printer", 7, 'p', 0, 0, 0, nullptr, 0},
    {"program", 2, 'p', 0, 0, 0, pgm, 0},
    {"push", 4, 'p', 0, 0, 0, nullptr, 0},
    {"pwd", 3, 'p', 0, 0, 0, pwdcmd, 0},
    {"predict", 3, 'p', 0, 600, 0, nullptr, 0},
    {"quietly", 3, 'q', 0, 0, 0, prefix_quietly, 0},
    {"query", 1, 'q', 0, 0, 0, query, 0},
    {"rename", 3, 'r', 0, 0, 0, renamecmd, 0},
    {"replace", 7, 'r', 0, 0, 1, replacecmd, 0},
    {"restore", 7, 'r', 0, 0, 0, restorecmd, 0},
    {"return", 3, 'r', 0, 0, 0, returncmd, 0},
    {"rotate_cmd8", 11, 'r', 0, 0, 0, nullptr, 0},
    {"rm", 2, 'r', 0, 0, 0, erasecmd, 0},
    {"rmdir", 5, 'r', 0, 0, 0, rmdircmd, 0},
    {"run", 2, 'r', 0, 0, 0, docmd, 1},
    {"save", 2, 's', 0, 0, 0, savecmd, 0},
    {"save_dlg", 8, 's', 0, 0, 0, nullptr, 0},
    {"scalar", 3, 's', 0, 0, 0, scalarcmd, 0},
    {"search", 6, 's', 0, 0, 0, searchcmd, 0},
    {"search_dlg", 10, 's', 0, 0, 0, nullptr, 0},
    {"set", 2, 's', 0, 0, 0, setcmd, 0},
    {"score_cmd8", 10, 's', 0, 0, 0, nullptr, 0},
    {"showpoint", 8, 's', 0, 0, 0, nullptr, 0},
    {"shell", 2, 's', 0, 0, 0, shellcmd, 0},
    {"sort", 2, 's', 0, 0, 0, sortcmd, 0},
    {"sleep", 5, 's', 0, 0, 0, sleepcmd, 0},
    {"sortmapj", 8, 's', 0, 0, 0, nullptr, 0},
    {"sreturn", 4, 's', 0, 0, 0, sreturncmd, 0},
    {"summarize", 2, 's', 0, 0, 1, summariz, 0},
    {"syntax", 6, 's', 0, 0, 0, kvsyntax, 0},
    {"sysdir", 6, 's', 0, 0, 0, kvsysdir, 0},
    {"subwin", 6, 's', 0, 0, 0, nullptr, 0},
    {"serset", 6, 's', 0, 0, 0, nullptr, 0},
    {"stypop", 6, 's', 0, 0, 0, nullptr, 0},
    {"tabdisp", 4, 't', 0, 0, 1, tabdispcmd, 0},
    {"tabulate", 2, 't', 0, 0, 1, tabulatecmd, 0},
    {"tempvar", 7, 't', 0, 0, 0, tmpvcmd, 1},
    {"tempname", 8, 't', 0, 0, 0, tmpvcmd, 1},
    {"tempfile", 7, 't', 0, 0, 0, tmpvcmd, 0},
    {"timer", 5, 't', 0, 0, 0, nullptr, 0},
    {"tokenize", 5, 't', 0, 0, 0, kvtoken, 0},
    {"tsrevar", 7, 't', 0, 0, 0, revar, 0},
    {"type", 2, 't', 0, 0, 0, typecmd, 0},
    {"translate", 5, 't', 0, 0, 0, translate_row, 0},
    {"translator", 10, 't', 0, 0, 0, nullptr, 0},
    {"transmap", 8, 't', 0, 0, 0, nullptr, 0},
    {"update", 6, 'u', 0, 0, 0, nullptr, 0},
    {"use", 1, 'u', 0, 0, 0, usecmd, 0},
    {"use_dlg", 7, 'u', 0, 0, 0, nullptr, 0},
    {"unabcmd", 7, 'u', 0, 0, 0, unabcmd, 0},
    {"version", 4, 'v', 0, 0, 0, vercmd, 0},
    {"view", 4, 'v', 0, 0, 0, nullptr, 0},
    {"while", 2, 'w', 0, 0, 0, ifcmd, 1},
    {"which", 4, 'w', 0, 0, 0, verscmd, 0},
    {"winexec", 7, 'w', 0, 0, 0, nullptr, 0},
    {"window", 3, 'w', 0, 0, 0, nullptr, 0},
    {"wmenu", 5, 'w', 0, 0, 0, nullptr, 0},
    {"xmlsave", 6, 'x', 0, 0, 0, nullptr, 0},
    {"xmluse", 6, 'x', 0, 0, 0, nullptr, 0},
    {"xshell", 3, 'x', 0, 0, 0, nullptr, 0},
};

const Builtin* lookup_builtin(const char* word) {
    for (const Builtin& b : builtin_table) {
        if (b.branch != word[0]) continue;
        if (b.minver && vernum < b.minver) continue;
        if (b.maxver && vernum >= b.maxver) continue;
        if (cmdcmp(word, b.word, b.minlen)) return &b;
    }
    return nullptr;
}

const char* findbuiltin(const char* word) {
    const Builtin* b = lookup_builtin(word);
    return b ? b->word : nullptr;
}

const char* findbyablebuiltin(const char* word) {
    const Builtin* b = lookup_builtin(word);
    return b && b->byable ? b->word : nullptr;
}

int notyet(const char* word) {
    return errorf(199, "command %s not yet available\n", word);
}

int run_builtin(const Builtin* b) {
    return b->fn ? b->fn(b->arg) : notyet(b->word);
}

} // namespace korvu
