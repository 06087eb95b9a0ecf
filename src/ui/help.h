// Help in the console edition: help files (`.hlp`, `.ptag`) found along the
// ado path and printed through the markup engine, the alias files that map
// abbreviations to topics, and the search through titles and keywords.
#pragma once
#include <string>

namespace korvu {

// Handlers of the built-in table.
int helpcmd(int arg);        // chelp, man: help printed to the results
int searchcmd(int arg);      // search, lookup
int usfindhlpalias(int arg); // _findhlpalias: the topic of an alias into r(name)

// The topic an alias stands for, from the alias file of its first letter
// (`<letter>help_alias.maint` on the ado path); empty when it is none.
std::string helpalias(const std::string& name);

// Finds the file of a topic; returns 1 and its path, or 0.
int findhelpfile(const std::string& topic, std::string* path);

// Looks a topic up and prints it; `quiet` suppresses the not-found message.
// 0 when shown, 111 when not found.
int ashelp(const char* name, int quiet);

} // namespace korvu
