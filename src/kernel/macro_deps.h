// What the macro code takes from the command loop, the tokenizer and parsing.
#pragma once
#include "kernel/cmdparse.h"
#include "kernel/errors.h"
#include "kernel/gettok.h"
#include "kernel/limits.h"
#include "kernel/loop.h"
#include "kernel/options.h"
