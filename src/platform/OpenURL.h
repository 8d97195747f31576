#pragma once

// Opens a link in the user's web browser through "xdg-open", without waiting for the browser.
// False when xdg-open could not be started.
bool LOpenURL(const char* url);
