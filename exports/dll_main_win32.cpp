// The library entry point of amiga.dll.

#include "platform/module_file.h"

#include <windows.h>
#include <libxml/parser.h>

// libxml2 is built with Win32 threads and LIBXML_STATIC_FOR_DLL, which makes it keep its
// per-thread state in a TLS slot and provide this hook for the DLL that embeds it: called for
// every notification, it frees a thread's XML state when the thread detaches. (Its header
// declares the hook only inside libxml2's own build.)
extern "C" int xmlDllMain(void* instance, unsigned long reason, void* reserved);

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) xmlInitParser();
    xmlDllMain(instance, reason, reserved);
    if (reason == DLL_PROCESS_DETACH) xmlCleanupParser();
    if (reason == DLL_PROCESS_ATTACH) kq::platform::set_module_instance(instance);
    return TRUE; // the module never refuses to load
}
