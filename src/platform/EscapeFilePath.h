#pragma once

// Makes a path safe to stand between double quotes on a /bin/sh command line: a backslash goes
// before every double quote and back-quote, and before "$" and "\", the other two characters
// the shell still interprets there. The result (in the 260-byte `out`) is cut to 259
// characters, never between a backslash and the character it protects. False when it had to be
// cut: the result then names another file.
bool EscapeFilePath(char* out, const char* path);
