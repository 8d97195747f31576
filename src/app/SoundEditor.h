#pragma once

#include <functional>
#include <string>

// The external sound editor: the command in setting "SoundEditor" of section "Settings", else
// the first of "audacity" and "xdg-open" found on PATH.
std::string LSoundEditorCommand();

// Starts the sound editor on the file (alone when `path` is empty) without waiting for it;
// `exited` runs on a thread of its own once the editor has ended. False when it could not be
// started.
bool LStartSoundEditor(const std::string& path, std::function<void()> exited);
