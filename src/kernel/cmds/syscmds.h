// Handlers of the small commands that talk to the operating system and the
// screen: display, cd, pwd, shell, sleep, type, dir, erase,
// mkdir, rmdir, copy, more.
#pragma once

namespace korvu {

int cdcmd(int);
int pwdcmd(int);
int shellcmd(int);
int sleepcmd(int);
int typecmd(int);
int dircmd(int);
int erasecmd(int);
int mkdircmd(int);
int rmdircmd(int);
int copycmd(int);
int morecmd(int);
int errcmd_handler(int);

} // namespace korvu
