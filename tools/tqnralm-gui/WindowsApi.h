// WindowsApi.h - the system headers of the assistant, taken in at this one
// place. The assistant is a Windows program through and through (its model
// alone knows no platform); every other file of it reaches the system
// through this header.
#ifndef TQNRALM_GUI_WINDOWSAPI_H
#define TQNRALM_GUI_WINDOWSAPI_H

#include <windows.h>
#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>
#include <shobjidl.h>

#endif  // TQNRALM_GUI_WINDOWSAPI_H
