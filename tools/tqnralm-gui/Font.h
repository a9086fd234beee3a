// The assistant's font: the system's message font when it draws Japanese
// itself, else a font made for Japanese that draws Latin text too. The
// mail's names are Japanese whatever the UI's language, and an English
// system's message font may have no kana and no linked font that has them.
#ifndef TQNRALM_GUI_FONT_H
#define TQNRALM_GUI_FONT_H

#include "WindowsApi.h"

namespace tqnralm {
namespace gui {

// `face` (the message font at the window's size) as the assistant uses it.
LOGFONTW FaceForJapanese(HWND hwnd, LOGFONTW face);

}  // namespace gui
}  // namespace tqnralm

#endif
