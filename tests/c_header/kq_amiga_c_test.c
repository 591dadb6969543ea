/*
 * The public header as a C host uses it: compiled as C11 (pedantic, warnings as errors), its
 * status codes equal to Windows' own and its records laid out as a 64-bit host reads them, and
 * linked against amiga.dll's import library and run under Wine.
 */
#include "kq_amiga.h"

#include <windows.h>

#include <stddef.h>
#include <wchar.h>

_Static_assert(KQ_S_OK == S_OK && KQ_S_FALSE == S_FALSE && KQ_E_NOTIMPL == E_NOTIMPL && KQ_E_POINTER == E_POINTER &&
                   KQ_E_FAIL == E_FAIL && KQ_E_OUTOFMEMORY == E_OUTOFMEMORY && KQ_E_INVALIDARG == E_INVALIDARG,
               "status codes");
_Static_assert(KQ_STATUS_FROM_WIN32(ERROR_BUFFER_OVERFLOW) == HRESULT_FROM_WIN32(ERROR_BUFFER_OVERFLOW) &&
                   KQ_STATUS_FROM_WIN32(ERROR_NOT_FOUND) == HRESULT_FROM_WIN32(ERROR_NOT_FOUND) &&
                   KQ_STATUS_FROM_WIN32(0) == S_OK,
               "Windows errors as statuses");
_Static_assert(offsetof(KQOption, currentValue) == 120 && offsetof(KQFileAssociation, iconLocation) == 56 &&
                   offsetof(KQDeviceCommand, command) == 16,
               "record fields at the offsets that a host reads");

/* A call through the header's declaration and the import library. */
int main(void) { return wcscmp(KQGetPlatformName(), L"Amiga") != 0; }
