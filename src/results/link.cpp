// The one link of the results subsystem: hooks the stores into the kernel,
// the expression compiler, macro expansion and the data area.
#include <cstring>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/expr/expr.h"
#include "data/vars/varlist.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/program/argparse.h"
#include "results/estore.h"
#include "results/stores.h"

namespace korvu {

int cfcn(const char* name, char* str, size_t n, double* num); // cfcn.cpp
int result_macro_value(int which, const char* name, char* dst, size_t n);
int result_macro_function(const char* word, char* dst);
int result_exp_value(int letter, const char* name, double* num, char* str);
int cleanhret_level(int32_t level);

namespace {

// Commands of the data area post through these: the first post of a command
// clears what earlier commands left.
int32_t last_post_clock = -1;
void fresh_r() {
    if (last_post_clock != sysclock) {
        retval_clear();
        last_post_clock = sysclock;
    }
}

void post_r(const char* name, double value) {
    fresh_r();
    retval_set_scalar(name, value);
}

int post_rmac(const char* name, const char* value) {
    fresh_r();
    return retval_set_local(name, value);
}

void post_rmac_void(const char* name, const char* value) {
    post_rmac(name, value);
}

void clear_r() {
    retval_clear();
    last_post_clock = sysclock;
}

void clear_saved() {
    retval_zap();
    ab_est(1);
    sretval_clear();
}

// Discarding the data ends the estimation results and the held ones, whose
// marker variables go with the data.
void discard_results() {
    ab_est(1);
    zapesti();
}

} // namespace

void link_results() {
    mac_hooks.resultvalue = result_macro_value;
    mac_hooks.endreturn = endreturn;
    mac_fcn_hooks[MXF_RESULTS] = result_macro_function;
    exphooks.rfcn = result_exp_value;
    exphooks.esample = [] { return lastest ? esample_var() : 0; };
    exphooks.cfcn = [](const char* name, double* num, char* str) {
        return cfcn(name, str, EXP_STRMAX + 1, num);
    };
    frame_hooks.estirestore = estirestore_pending;
    frame_hooks.cleanesti = [] { return cleanesti_level(typelmac); };
    frame_hooks.cleanhret = [] { return cleanhret_level(typelmac); };
    dahooks.post_r = post_r;
    dahooks.clear_saved_results = clear_saved;
    dahooks.discard_results = discard_results;
    arg_hooks.post_rmacro = post_rmac;
    arg_hooks.clear_r = clear_r;
    post_rmacro = post_rmac_void;
}

} // namespace korvu
