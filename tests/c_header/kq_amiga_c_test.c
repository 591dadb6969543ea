/*
 * The public header as a C host uses it: compiled as C11 (pedantic, warnings as errors),
 * linked against amiga.dll's import library so that every call below goes through the
 * header's own declarations, and run under Wine against the built DLL. Exit code 0 when every
 * check holds; each failed check prints its line.
 */
#include "kq_amiga.h"

#include <windows.h>

#include <stdio.h>
#include <string.h>
#include <wchar.h>

static int failures = 0;

#define CHECK(condition)                                                                  \
    do {                                                                                  \
        if (!(condition)) {                                                               \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
            ++failures;                                                                   \
        }                                                                                 \
    } while (0)

static int starts_with(const kq_char* text, const kq_char* prefix) {
    return text != NULL && wcsncmp(text, prefix, wcslen(prefix)) == 0;
}

/* The status codes and the flag values that the header documents, against Windows' own. */
static void check_constants(void) {
    CHECK(KQ_S_OK == S_OK);
    CHECK(KQ_S_FALSE == S_FALSE);
    CHECK(KQ_E_NOTIMPL == E_NOTIMPL);
    CHECK(KQ_E_POINTER == E_POINTER);
    CHECK(KQ_E_FAIL == E_FAIL);
    CHECK(KQ_E_OUTOFMEMORY == E_OUTOFMEMORY);
    CHECK(KQ_E_INVALIDARG == E_INVALIDARG);
    CHECK(KQ_STATUS_FROM_WIN32(ERROR_NOT_FOUND) == HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    CHECK(KQ_STATUS_FROM_WIN32(ERROR_BUFFER_OVERFLOW) == HRESULT_FROM_WIN32(ERROR_BUFFER_OVERFLOW));
    CHECK(KQ_STATUS_FROM_WIN32(0) == S_OK);
    CHECK((KQ_RUNTIME_MEDIUM_WRITE_BACK & KQ_RUNTIME_MEDIUM_ASSUME_CHANGED) == 0);
    CHECK((KQ_RUNTIME_MEDIUM_NO_TIMESTAMP & KQ_RUNTIME_MEDIUM_CALLER_KEY) == 0);
    CHECK((KQ_COPY_MEDIUM_CONVERT | KQ_COPY_MEDIUM_NO_OVERWRITE | KQ_COPY_MEDIUM_UNIQUE_NAME |
           KQ_COPY_MEDIUM_SKIP_SAME_NAME) == 0xFu);
    CHECK((KQ_RAW_KEYS_PRESS & KQ_RAW_KEYS_RELEASE) == 0);
}

static void check_platform_name(void) {
    const kq_char* name = KQGetPlatformName();
    CHECK(name != NULL && wcscmp(name, L"Amiga") == 0);
    CHECK(KQGetPlatformName() == name);
}

static void check_options(void) {
    uint32_t index = 0;
    KQOption* option = NULL;
    kq_status status = KQ_S_OK;
    CHECK(sizeof(KQOption) == 136);
    for (index = 0; index < 64; ++index) {
        uint32_t choice = 0;
        status = KQGetOption(index, 0, &option, NULL);
        if (status != KQ_S_OK) break;
        CHECK(option != NULL);
        if (option == NULL) break;
        CHECK(option->cbSize == sizeof(KQOption));
        CHECK(option->name != NULL && option->name[0] != 0);
        CHECK(option->label != NULL && option->label[0] != 0);
        CHECK(option->type == 1 || option->type == 2);
        CHECK(option->flags == 0);
        CHECK(option->currentValue != NULL && option->defaultValue != NULL);
        if (option->type == 1) {
            CHECK(option->count == 0);
            CHECK(option->currentValue != NULL &&
                  (wcscmp(option->currentValue, L"0") == 0 || wcscmp(option->currentValue, L"1") == 0));
        } else {
            CHECK(option->count > 0);
            CHECK(option->choiceValues != NULL && option->choiceLabels != NULL);
            for (choice = 0; option->choiceValues != NULL && choice < option->count; ++choice)
                CHECK(option->choiceValues[choice] != NULL);
        }
        CHECK(KQFreeOption(option) == KQ_S_OK);
        option = NULL;
    }
    CHECK(index == 6);
    CHECK(status == KQ_S_FALSE);
    CHECK(option == NULL);
    CHECK(KQGetOption(0, 0, NULL, NULL) == KQ_E_INVALIDARG);
    CHECK(KQFreeOption(NULL) == KQ_S_OK);
}

static void check_file_associations(void) {
    static const wchar_t* const extensions[KQ_FILE_ASSOCIATION_COUNT] = {L"adf", L"adz", L"cue", L"dms", L"hdf",
                                                                         L"hdz", L"ipf", L"iso", L"scp", L"uae"};
    KQFileAssociation sentinel;
    KQFileAssociation* association = NULL;
    uint32_t index = 0;
    CHECK(sizeof(KQFileAssociation) == 72);
    for (index = 0; index < KQ_FILE_ASSOCIATION_COUNT; ++index) {
        wchar_t pattern[16];
        CHECK(KQGetFileAssociation(index, &association) == KQ_S_OK);
        CHECK(association != NULL);
        if (association == NULL) continue;
        CHECK(association->cbSize == sizeof(KQFileAssociation));
        CHECK(association->extension != NULL && wcscmp(association->extension, extensions[index]) == 0);
        swprintf(pattern, 16, L"*.%ls", extensions[index]);
        CHECK(association->filterPattern != NULL && wcscmp(association->filterPattern, pattern) == 0);
        CHECK(association->typeName != NULL && association->filterName != NULL && association->iconLocation != NULL);
        CHECK(association->category <= 2);
        CHECK(KQFreeFileAssociation(association) == KQ_S_OK);
    }
    association = &sentinel; /* the export must overwrite it with NULL */
    CHECK(KQGetFileAssociation(KQ_FILE_ASSOCIATION_COUNT, &association) == KQ_S_FALSE);
    CHECK(association == NULL);
    CHECK(KQGetFileAssociation(0, NULL) == KQ_E_INVALIDARG);
    CHECK(KQFreeFileAssociation(NULL) == KQ_S_OK);
}

static void check_device_commands(void) {
    KQDeviceCommand* command = NULL;
    uint32_t index = 0;
    CHECK(sizeof(KQDeviceCommand) == 24);
    /* The keyboard's four commands (category 7): a name, a tab and the keys, and a script. */
    for (index = 0; index < 4; ++index) {
        CHECK(KQGetDeviceCommand(index, 7, 0, 0, L"a-1200", &command) == KQ_S_OK);
        CHECK(command != NULL);
        if (command == NULL) continue;
        CHECK(command->cbSize == sizeof(KQDeviceCommand));
        CHECK(command->name != NULL && wcschr(command->name, L'\t') != NULL);
        CHECK(starts_with(command->command, L"KEY_RAW_DOWN "));
        CHECK(KQFreeDeviceCommand(command) == KQ_S_OK);
    }
    CHECK(KQGetDeviceCommand(4, 7, 0, 0, L"a-1200", &command) == KQ_S_FALSE);
    CHECK(command == NULL);
    CHECK(KQGetDeviceCommand(0, 2, 0, 0, L"a-cdtv", &command) == KQ_S_OK);
    CHECK(command != NULL && command->name != NULL && wcscmp(command->name, L"Play/Pause") == 0);
    CHECK(KQFreeDeviceCommand(command) == KQ_S_OK);
    CHECK(KQGetDeviceCommand(0, 7, 0, 0, NULL, NULL) == KQ_E_INVALIDARG);
    CHECK(KQFreeDeviceCommand(NULL) == KQ_S_OK);
}

static void check_raw_key_strings(void) {
    KQKeyboardInputData* data = NULL;
    kq_char* keys = NULL;
    CHECK(KQGetKeyboardInputData2(L"a-1200", L"en-us", NULL, 0, 0, 0, 0, 0, &data) == KQ_S_OK);
    CHECK(data != NULL);
    if (data == NULL) return;
    CHECK(KQGetStringRawKeys(L"a", data, KQ_RAW_KEYS_TYPE, &keys) == KQ_S_OK);
    CHECK(keys != NULL && wcscmp(keys, L"KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 ") == 0);
    CHECK(KQFreeStringRawKeys(keys) == KQ_S_OK);
    keys = NULL;
    CHECK(KQGetStringRawKeys(L"CONTROL+LEFT AMIGA", data, KQ_RAW_KEYS_PRESS, &keys) == KQ_S_OK);
    CHECK(keys != NULL && wcscmp(keys, L"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 ") == 0);
    CHECK(KQFreeStringRawKeys(keys) == KQ_S_OK);
    keys = NULL;
    CHECK(KQGetStringRawKeys(L"CONTROL+LEFT AMIGA", data, KQ_RAW_KEYS_RELEASE, &keys) == KQ_S_OK);
    CHECK(keys != NULL && wcscmp(keys, L"KEY_RAW_UP 0x63 KEY_RAW_UP 0x66 ") == 0);
    CHECK(KQFreeStringRawKeys(keys) == KQ_S_OK);
    CHECK(KQGetStringRawKeys(L"a", data, KQ_RAW_KEYS_TYPE, NULL) == KQ_E_POINTER);
    CHECK(KQFreeStringRawKeys(NULL) == KQ_S_OK);
    CHECK(KQFreeKeyboardInputData(data) == KQ_S_OK);
    CHECK(KQFreeKeyboardInputData(NULL) == KQ_S_OK);
}

/* An empty floppy from the template beside the DLL; freeing the path deletes the image. */
static void check_empty_medium(void) {
    kq_char* path = NULL;
    WIN32_FILE_ATTRIBUTE_DATA attributes;
    CHECK(KQGetEmptyMedium2(&path, NULL, 0, KQ_EMPTY_MEDIUM_DD) == KQ_S_OK);
    CHECK(path != NULL);
    if (path == NULL) return;
    CHECK(GetFileAttributesExW(path, GetFileExInfoStandard, &attributes));
    CHECK(attributes.nFileSizeHigh == 0 && attributes.nFileSizeLow == 901120);
    {
        wchar_t copy[MAX_PATH];
        CHECK(wcslen(path) < MAX_PATH);
        wcsncpy(copy, path, MAX_PATH - 1);
        copy[MAX_PATH - 1] = 0;
        CHECK(KQFreeEmptyMedium(path) == KQ_S_OK);
        CHECK(GetFileAttributesW(copy) == INVALID_FILE_ATTRIBUTES);
    }
    CHECK(KQGetEmptyMedium2(NULL, NULL, 0, 7) == KQ_E_INVALIDARG);
    CHECK(KQFreeEmptyMedium(NULL) == KQ_S_OK);
}

static void check_shell_windows(void) {
    CHECK(KQ9Editor() == KQ_E_NOTIMPL);
    CHECK(KQEditScreenClip() == KQ_E_NOTIMPL);
    CHECK(KQEditScreenClip2() == KQ_E_NOTIMPL);
    CHECK(KQROMToolbox() == KQ_E_NOTIMPL);
    CHECK(KQOpenKeyboardWindow() == KQ_E_NOTIMPL);
    CHECK(KQSetKeyboardWindow() == KQ_E_NOTIMPL);
    CHECK(KQResetKeyboardWindow() == KQ_E_NOTIMPL);
    CHECK(KQGetKeyboardWindowInfo() == KQ_E_NOTIMPL);
    CHECK(KQGetKeyDialog2() == KQ_E_NOTIMPL);
    CHECK(KQProcessVButtonEditMessage() == KQ_E_NOTIMPL);
    CHECK(KQProcessVButtonEditMessage2() == KQ_E_NOTIMPL);
}

int main(void) {
    check_constants();
    check_platform_name();
    check_options();
    check_file_associations();
    check_device_commands();
    check_raw_key_strings();
    check_empty_medium();
    check_shell_windows();
    if (failures != 0) {
        fprintf(stderr, "%d check(s) failed\n", failures);
        return 1;
    }
    printf("kq_amiga.h from C: all checks passed\n");
    return 0;
}
