/*
 * The public header as a C host uses it: compiled as C11 (pedantic, warnings as errors), its
 * status codes equal to Windows' own and its records laid out as a 64-bit host reads them, and
 * its declarations linked against amiga.dll's import library and called under Wine.
 */
#include "kq_amiga.h"

#include <windows.h>

#include <stddef.h>
#include <stdio.h>
#include <wchar.h>

_Static_assert(KQ_S_OK == S_OK && KQ_S_FALSE == S_FALSE && KQ_E_NOTIMPL == E_NOTIMPL && KQ_E_POINTER == E_POINTER &&
                   KQ_E_FAIL == E_FAIL && KQ_E_OUTOFMEMORY == E_OUTOFMEMORY && KQ_E_INVALIDARG == E_INVALIDARG,
               "status codes");
_Static_assert(KQ_STATUS_FROM_WIN32(ERROR_BUFFER_OVERFLOW) == HRESULT_FROM_WIN32(ERROR_BUFFER_OVERFLOW) &&
                   KQ_STATUS_FROM_WIN32(ERROR_NOT_FOUND) == HRESULT_FROM_WIN32(ERROR_NOT_FOUND) &&
                   KQ_STATUS_FROM_WIN32(0) == S_OK,
               "Windows errors as statuses");
_Static_assert(offsetof(KQOption, name) == 8 && offsetof(KQOption, label) == 16 &&
                   offsetof(KQOption, description) == 24 && offsetof(KQOption, groupLabel) == 32 &&
                   offsetof(KQOption, groupDescription) == 40 && offsetof(KQOption, flags) == 52 &&
                   offsetof(KQOption, choiceValues) == 56 && offsetof(KQOption, choiceLabels) == 64 &&
                   offsetof(KQOption, choiceDescriptions) == 72 && offsetof(KQOption, secondText) == 88 &&
                   offsetof(KQOption, currentValue) == 120,
               "option record layout");
_Static_assert(offsetof(KQFileAssociation, extension) == 8 && offsetof(KQFileAssociation, filterPattern) == 40 &&
                   offsetof(KQFileAssociation, iconLocation) == 56 && offsetof(KQFileAssociation, flags) == 68,
               "file association record layout");
_Static_assert(offsetof(KQDeviceCommand, name) == 8 && offsetof(KQDeviceCommand, command) == 16,
               "device command record layout");

/* Calls through the header's declarations: 0 when the DLL answers as the header says. */
int main(void) {
    KQFileAssociation* association = NULL;
    int failed = wcscmp(KQGetPlatformName(), L"Amiga") != 0 || KQ9Editor() != KQ_E_NOTIMPL;
    failed |= KQGetFileAssociation(9, &association) != KQ_S_OK || association == NULL;
    failed |= association == NULL || association->cbSize != sizeof(KQFileAssociation) ||
              wcscmp(association->filterPattern, L"*.uae") != 0 || association->flags != 7;
    failed |= KQFreeFileAssociation(association) != KQ_S_OK;
    if (failed) fprintf(stderr, "kq_amiga.h from C: the DLL did not answer as the header says\n");
    return failed;
}
