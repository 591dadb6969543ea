/*
 * kq_amiga.h: the interface of the Amiga platform module (amiga.dll) for host players.
 *
 * The host loads <host>\Platforms\Amiga\amiga.dll and calls the flat KQ* exports below, one
 * at a time, on its own threads. Every export returns a status in the HRESULT form unless
 * noted (KQGetPlatformName returns a string; the keyboard exports return the status in a
 * 64-bit value). Strings are NUL-terminated UTF-16 in both directions; input strings are
 * borrowed for the duration of the call; paths are limited to 260 characters and may separate
 * their elements with "\" or "/", as Windows itself allows.
 *
 * A record or string that the module hands to the host is one block; the host releases it
 * with the matching KQFree* export and never with its own allocator. Every KQFree* export
 * accepts NULL and then does nothing. Option, file-association and device-command records
 * come from the local heap; empty-medium paths, keyboard input data and raw key strings from
 * the global heap. The strings of KQGetDefaultSystemROM, KQGetRestoreSystemFilesPaths,
 * KQGetApplicationInfo and KQBootTag, which have no KQFree* export of their own, also come
 * from the global heap: the host frees them with GlobalFree.
 *
 * Exports that the module does not implement yet answer KQ_E_NOTIMPL. The editor windows
 * (KQ9Editor, KQEditScreenClip, KQEditScreenClip2, KQROMToolbox), the on-screen keyboard
 * window (KQOpenKeyboardWindow, KQSetKeyboardWindow, KQResetKeyboardWindow,
 * KQGetKeyboardWindowInfo), the key dialog (KQGetKeyDialog2) and virtual-button editing
 * (KQProcessVButtonEditMessage, KQProcessVButtonEditMessage2) always answer KQ_E_NOTIMPL.
 *
 * The exports come in sections below; each section names the file of the module's source
 * that holds its exports (the export names and ordinals are in exports/amiga.def).
 */
#ifndef KQ_AMIGA_H
#define KQ_AMIGA_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#include <windows.h>
typedef wchar_t kq_char; /* UTF-16 code unit */
typedef HRESULT kq_status;
#else
/* The module's native (Linux) build, used for its own development and tests. */
#ifndef __cplusplus
#include <uchar.h>
#endif
typedef char16_t kq_char;
typedef int32_t kq_status;
#endif

#ifdef __cplusplus
#define KQ_STATIC_ASSERT(condition, message) static_assert(condition, message)
extern "C" {
#else
#define KQ_STATIC_ASSERT(condition, message) _Static_assert(condition, message)
#endif

/* The status codes and records stay aligned by hand, as a reference. */
/* clang-format off */
/* Status codes (HRESULT values). */
#define KQ_S_OK ((kq_status)0)
#define KQ_S_FALSE ((kq_status)1)                       /* no more entries; not applicable */
#define KQ_E_NOTIMPL ((kq_status)(int32_t)0x80004001u)   /* not implemented */
#define KQ_E_POINTER ((kq_status)(int32_t)0x80004003u)   /* a required out-pointer is NULL */
#define KQ_E_FAIL ((kq_status)(int32_t)0x80004005u)      /* unspecified failure */
#define KQ_E_OUTOFMEMORY ((kq_status)(int32_t)0x8007000Eu)
#define KQ_E_INVALIDARG ((kq_status)(int32_t)0x80070057u) /* missing argument, unknown name */
/* A Windows error code e in HRESULT form, as HRESULT_FROM_WIN32(e) gives it. */
#define KQ_STATUS_FROM_WIN32(e) \
    ((kq_status)((uint32_t)(e) == 0 ? 0 : (int32_t)(((uint32_t)(e) & 0xFFFFu) | 0x80070000u)))

/* Option record (KQGetOption); local heap, freed with KQFreeOption. */
typedef struct KQOption {
    uint32_t cbSize;                    /* 136 */
    const kq_char* name;                /* also the registry value name */
    const kq_char* label;
    const kq_char* description;
    const kq_char* groupLabel;          /* NULL when the option has no group */
    const kq_char* groupDescription;
    uint32_t type;                      /* 1 boolean ("0"/"1"), 2 choice list */
    uint32_t flags;                     /* always 0 */
    const kq_char* const* choiceValues; /* count entries each */
    const kq_char* const* choiceLabels;
    const kq_char* const* choiceDescriptions;
    uint32_t count;                     /* 0 for a boolean */
    const kq_char* secondText;          /* always NULL */
    const kq_char* thirdText;           /* always NULL */
    const kq_char* const* secondChoiceTexts; /* always NULL */
    const kq_char* const* thirdChoiceTexts;  /* always NULL */
    const kq_char* currentValue;
    const kq_char* defaultValue;
} KQOption;

/* File-association record (KQGetFileAssociation); local heap, freed with
 * KQFreeFileAssociation. */
typedef struct KQFileAssociation {
    uint32_t cbSize;                    /* 72 */
    const kq_char* extension;           /* without its dot, such as "adf" */
    const kq_char* typeName;
    const kq_char* extensionDescription;
    const kq_char* longDescription;
    const kq_char* filterPattern;       /* "*.adf" */
    const kq_char* filterName;
    const kq_char* iconLocation;        /* "<module path>,-<id>", empty when none */
    uint32_t category;                  /* 0 floppy, 1 hard disk, 2 CD */
    uint32_t flags;
} KQFileAssociation;

/* Device-command record (KQGetDeviceCommand); local heap, freed with KQFreeDeviceCommand. */
typedef struct KQDeviceCommand {
    uint32_t cbSize;                    /* 24 */
    const kq_char* name;                /* display name, a tab and the keys when it has some */
    const kq_char* command;             /* raw-key script */
} KQDeviceCommand;

/* Keyboard input data (KQGetKeyboardInputData2): opaque to the host, global heap, freed
 * with KQFreeKeyboardInputData. */
typedef struct KQKeyboardInputData KQKeyboardInputData;

#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
KQ_STATIC_ASSERT(sizeof(KQOption) == 136, "option record header is 136 bytes");
KQ_STATIC_ASSERT(offsetof(KQOption, type) == 48, "option type at 48");
KQ_STATIC_ASSERT(offsetof(KQOption, count) == 80, "option count at 80");
KQ_STATIC_ASSERT(offsetof(KQOption, defaultValue) == 128, "option default value at 128");
KQ_STATIC_ASSERT(sizeof(KQFileAssociation) == 72, "file association header is 72 bytes");
KQ_STATIC_ASSERT(offsetof(KQFileAssociation, category) == 64, "category at 64");
KQ_STATIC_ASSERT(sizeof(KQDeviceCommand) == 24, "device command header is 24 bytes");
#endif
/* clang-format on */

/* ==== Module frame: exports/exports_module.cpp (DllMain: exports/dll_main_win32.cpp) ==== */

/* Returns the constant "Amiga"; the same pointer on every call, never freed. */
const kq_char* KQGetPlatformName(void);

/* ==== Options: exports/exports_options.cpp ==== */

/* KQGetOption describes option `index` (0 to 5) in a new record (KQ_S_OK), or ends
 * the list with KQ_S_FALSE and NULL; KQ_E_INVALIDARG for a null record pointer, KQ_E_OUTOFMEMORY
 * when the record cannot be allocated. KQSetOption stores a value by the option's exact name
 * (KQ_E_INVALIDARG for an unknown name); an empty value deletes a choice option's value. */
kq_status KQGetOption(uint32_t index, uint32_t reserved, KQOption** option,
                      const kq_char* reserved_text);
kq_status KQFreeOption(KQOption* option);
kq_status KQSetOption(const kq_char* name, const kq_char* value, const kq_char* reserved1,
                      const kq_char* reserved2);

/* ==== File associations: exports/exports_file_associations.cpp ==== */

/* The file types that the platform claims, by index (0 "adf", 1 "adz",
 * 2 "cue", 3 "dms", 4 "hdf", 5 "hdz", 6 "ipf", 7 "iso", 8 "scp", 9 "uae"). KQGetFileAssociation
 * sets *association to NULL, then to a new record and returns KQ_S_OK; KQ_S_FALSE (and NULL)
 * from index KQ_FILE_ASSOCIATION_COUNT on; KQ_E_INVALIDARG for a null association pointer;
 * KQ_E_OUTOFMEMORY when the record cannot be allocated. The record is one local-heap block,
 * the 72-byte header followed by its seven strings; no string pointer is NULL, a text the type
 * does not have is empty ("cue" and "iso" have only the extension, filter pattern and filter
 * name). Texts follow the module's string table. KQFreeFileAssociation releases the record
 * with LocalFree and returns KQ_S_OK; NULL does nothing. */
#define KQ_FILE_ASSOCIATION_COUNT 10
kq_status KQGetFileAssociation(uint32_t index, KQFileAssociation** association);
kq_status KQFreeFileAssociation(KQFileAssociation* association);

/* ==== Content info and tooltips: exports/exports_content_info.cpp ==== */

/* Drive types of the content texts. */
#define KQ_DRIVE_FLOPPY 0
#define KQ_DRIVE_HARD_DISK 1
#define KQ_DRIVE_CD 2
#define KQ_DRIVE_NETWORK 3
/* Flags of KQGetContentInfo. */
#define KQ_CONTENT_INFO_RUNTIME 0x1 /* records are runtime lines: path TAB key=value TAB ... */
#define KQ_CONTENT_INFO_SHORT 0x2   /* configuration mode: "Work" (DH0, hardfile) per disk */

/* The tooltip of a drive: "Floppy disk drive DF<index>:", "Hard disk drive(s):", "CD drive:" or
 * "Network", then what the drive holds (the medium's stored volume name in double quotes and the
 * label, or "Empty"). path is the medium file or drive root, label its display name; for a hard
 * disk they are KQGetContentInfo's list and records. The text is cut to the buffer and always
 * ends with a NUL; an unknown drive type gives empty text. KQ_E_INVALIDARG for a null buffer or
 * a zero length; KQ_E_OUTOFMEMORY when the text cannot be made.
 *
 * KQGetContentInfo: the summary of the hard disks (drive_type must be KQ_DRIVE_HARD_DISK).
 * Texts use LF between lines, TAB between fields and CR between the entries of a list. In
 * configuration mode list has "name TAB path" lines and records "path TAB devices TAB volumes
 * TAB kind" lines; in runtime mode list is unused and records has "path TAB key=value ..." lines
 * (devicename, volumename, bootpriority, blocksize, sectors, surfaces, reserved, vendor-id,
 * product-id). KQ_E_INVALIDARG for a null buffer, a zero length or another drive type (the
 * buffer is then untouched); otherwise the buffer is emptied first, and a text that does not fit
 * with its NUL gives KQ_STATUS_FROM_WIN32(111) and leaves it empty. Nothing is allocated. */
kq_status KQGetContentTooltip(uint8_t drive_type, uint32_t drive_index, const kq_char* path,
                              const kq_char* label, kq_char* buffer, uint32_t buffer_chars);
kq_status KQGetContentInfo(uint8_t drive_type, uint32_t drive_index, const kq_char* list,
                           const kq_char* records, kq_char* buffer, uint32_t buffer_chars,
                           uint32_t flags);

/* ==== Auto-configuration: exports/exports_auto_configuration.cpp ==== */

/* Flag of KQAutoConfigureApplication: input is the path of an emulator configuration file. */
#define KQ_AUTOCONFIGURE_IMPORT 0x1

/* Completes an application description that lists only media. input is the XML text of a
 * catalog document ("xadml/catalog/application" with its media; the declaration's encoding is
 * ignored, the text is UTF-16) or, with KQ_AUTOCONFIGURE_IMPORT, the path of a ".uae" emulator
 * configuration file; reserved is not read. On success *xml receives the completed document as
 * zero-terminated UTF-8 text with its XML declaration: the model, the boot medium first, memory,
 * floppy drives and the game ports' controllers. The text comes from the global heap: free it
 * with GlobalFree. *xml is set to NULL first and stays NULL on failure, and also with KQ_S_OK
 * when the catalog lists no media. KQ_E_POINTER for a null input or xml; KQ_E_INVALIDARG in
 * import mode when the path's extension is not "uae"; KQ_E_FAIL when a medium cannot be
 * analysed or no model can be settled; KQ_STATUS_FROM_WIN32(1157) when an IPF image needs the
 * CAPSImg library, which is missing; the parser's status for a catalog that does not parse
 * (KQ_STATUS_FROM_WIN32(13)); the file system's error for a configuration file that cannot be
 * read. */
kq_status KQAutoConfigureApplication(const kq_char* input, void* reserved, uint32_t flags,
                                     char** xml);

/* ==== Models, ROMs, configuration and input ports: exports/exports_configuration.cpp ==== */

/* Lines about the manifest's hardware ("Model: ...", "ROM: ...", "CPU: ...", "PCI bridge: ..."),
 * each ending in CR LF; empty when the manifest names no model. manifest_utf8 is the manifest
 * as zero-terminated UTF-8 text. KQ_E_POINTER for a null text pointer; the manifest's parse
 * status (KQ_E_INVALIDARG for a null manifest) and no text when it cannot be read. The text
 * comes from the global heap: free it with GlobalFree. */
kq_status KQGetApplicationInfo(kq_char** text, const char* manifest_utf8);
/* KQ_S_OK when the files of the ROM are in <data_folder>\Shared\rom (after the fallbacks for
 * the model and video standard, "ntsc" or anything else for PAL), KQ_S_FALSE when one is
 * missing; KQ_E_INVALIDARG when rom_id or data_folder is missing or empty. */
kq_status KQROMExists(const kq_char* rom_id, const kq_char* model_id, const kq_char* video,
                      const kq_char* data_folder);
/* The model's default ROM id (unknown models: "120"), from the global heap (GlobalFree); NULL
 * with KQ_S_OK when it cannot be allocated. KQ_E_INVALIDARG when an argument is missing. */
kq_status KQGetDefaultSystemROM(kq_char** rom_id, const kq_char* model_id);
/* The shared folders under data_folder whose system files can be restored, as tab-separated
 * pairs of relative folder and description ("Shared\adf", "Shared\hdf", "Shared\rom", those
 * that exist); empty when none does. From the global heap (GlobalFree). A missing argument
 * returns KQ_S_OK without a text. */
kq_status KQGetRestoreSystemFilesPaths(kq_char** text, const kq_char* data_folder);
/* 3 ports; multitap_ports 3 (both extra ports) for the "parallel" multitap, else 0; third 0,
 * fourth 1. Null outputs are skipped; KQ_E_INVALIDARG for a null model id. */
kq_status KQGetInputPortsInfo(const kq_char* model_id, const kq_char* multitap_type,
                              uint32_t* port_count, uint32_t* multitap_ports, uint32_t* third,
                              uint32_t* fourth);
/* The default content of a port: 0 empty, 1 mouse, 2 joystick, 3 game pad, 4 joypad (port 0:
 * 4 on "a-cd32", 2 on "a-cdtv", 1 elsewhere; other ports 0). KQ_E_INVALIDARG for a null
 * model id or content pointer. */
kq_status KQGetDefaultInputPortContent(const kq_char* model_id, uint32_t port, uint32_t* content);

/* ==== Media: exports/exports_media.cpp ==== */

/* Runtime media: a private working copy of the user's ".adf"/".hdf" image (inflated from
 * ".adz"/".hdz"; the copy of Game.adz is named <key>-Game.adf) in <temp>\Quennet\, with a
 * record <key>.info beside it (the copy's FILETIME as made, then the image's path in
 * UTF-16LE). Nothing is kept in memory between the calls, so any process that knows the
 * copy's path can check or dismiss it. Each call has its own state: several calls, also
 * inflations of compressed images, may run at once on different threads.
 *
 * KQGetRuntimeMedium: buffer receives the copy's path (truncated to buffer_chars - 1
 * characters and a NUL); alternate_folder, when given, is searched for a file of the image's
 * name first. KQ_S_FALSE for other kinds of image (nothing done); KQ_E_INVALIDARG for a null
 * path or buffer, a zero buffer_chars, a path without "\" or "/", or a caller's key that is not 36
 * characters of a file name; KQ_E_FAIL when the temporary folder or the copy's time cannot be
 * read; KQ_STATUS_FROM_WIN32(111) when the copy's or the record's path would be too long;
 * 0x80040000 | code when inflating fails (codes 2-19: 2 input not opened, 3 output not
 * created, 4 broken ZIP header, 5 ZIP method, 6 short gzip header, 7 gzip method, 8 multi-part,
 * 9 not gzip or ZIP, 10 encrypted, 11 corrupt data, 12 other decoder failure, 13 stored sizes
 * differ, 14 and 15 write failed, 16 gzip trailer missing, 17 ZIP data descriptor missing,
 * 18 CRC-32 mismatch, 19 size mismatch); else the file system's error. */
#define KQ_RUNTIME_MEDIUM_NO_TIMESTAMP 0x1u /* keep no time: the copy always counts as changed */
#define KQ_RUNTIME_MEDIUM_CALLER_KEY 0x2u   /* the 36-character key is the buffer's text */
kq_status KQGetRuntimeMedium(const kq_char* image_path, const kq_char* alternate_folder,
                             kq_char* buffer, uint32_t buffer_chars, uint32_t flags);
/* *changed = 1 when the copy's last-write time differs from the one recorded (or none was),
 * else 0; it is set only on success. KQ_E_INVALIDARG for null arguments or a name that is not
 * <key>-<name>; the file system's error when the record or the copy cannot be read. */
kq_status KQCheckRuntimeMedium(const kq_char* working_copy, uint32_t* changed);
/* Writes a changed copy back when flags ask for it (compressed again for ".adz"/".hdz"; the new
 * image is written beside the old one and then takes its place), then deletes the copy and its
 * record. When writing back fails, its status is returned and the copy and record stay for
 * another try. reserved is ignored. KQ_E_INVALIDARG for a null path or a name that is not
 * <key>-<name>; the file system's error when the record cannot be read (nothing is deleted). */
#define KQ_RUNTIME_MEDIUM_WRITE_BACK 0x0Fu     /* any of these bits */
#define KQ_RUNTIME_MEDIUM_ASSUME_CHANGED 0x10u /* skip the time comparison */
kq_status KQDismissRuntimeMedium(const kq_char* working_copy, void* reserved, uint32_t flags);
/* Empty media: a blank, formatted OFS floppy image (kind 0: 880 KB "a-dd-ofs-empty.adf",
 * kind 1: 1,760 KB "a-hd-ofs-empty.adf"; only the low byte of kind counts) copied from the
 * templates in "Tessary" beside the DLL into a new folder of its own in the temporary folder
 * (AEMxxxx.tmp), its volume dated now (local time). *path receives the image's path from the
 * global heap; release it with KQFreeEmptyMedium only, which deletes the image and its folder.
 * A null path only checks that the template is there. KQ_E_INVALIDARG for a non-zero
 * must_be_zero or another kind, KQ_STATUS_FROM_WIN32(1168) when the template is missing,
 * KQ_STATUS_FROM_WIN32(111) for a temporary folder too deep, else the file system's error (and
 * nothing is left behind). KQGetEmptyMedium is kind 0. */
#define KQ_EMPTY_MEDIUM_DD 0u /* 880 KB double-density floppy */
#define KQ_EMPTY_MEDIUM_HD 1u /* 1,760 KB high-density floppy */
kq_status KQGetEmptyMedium(kq_char** path, void* reserved, uint32_t must_be_zero);
kq_status KQGetEmptyMedium2(kq_char** path, void* reserved, uint32_t must_be_zero, uint32_t kind);
/* Always KQ_S_OK; a null path does nothing. */
kq_status KQFreeEmptyMedium(kq_char* path);
/* Copies a medium file into target_folder under a US-ASCII name (elements of either path with
 * other characters are replaced by their short names where they have one; the file name is
 * converted with "_" for what has no ASCII form) and writes the target's path into buffer
 * (truncated to buffer_chars - 1 characters and a NUL). The copy is writable. A ".cue" sheet
 * takes the data files it names along (into the same folder under their own names; a sheet
 * that names a file outside its folder is refused with KQ_STATUS_FROM_WIN32(161)).
 * KQ_S_FALSE: nothing copied (KQ_COPY_MEDIUM_SKIP_SAME_NAME). KQ_E_INVALIDARG for a null
 * argument, a zero buffer_chars or a source without "\" or "/"; KQ_E_FAIL when no free name is
 * left; KQ_STATUS_FROM_WIN32(80) when the target exists under KQ_COPY_MEDIUM_NO_OVERWRITE;
 * KQ_STATUS_FROM_WIN32(13) when unpacking fails (nothing is left); else the file system's error. */
#define KQ_COPY_MEDIUM_CONVERT 0x1u        /* unpack .adz and .dms into .adf, .hdz into .hdf */
#define KQ_COPY_MEDIUM_NO_OVERWRITE 0x2u   /* fail instead of replacing an existing target */
#define KQ_COPY_MEDIUM_UNIQUE_NAME 0x4u    /* Name(2).ext, Name(3).ext ... when Name.ext exists */
#define KQ_COPY_MEDIUM_SKIP_SAME_NAME 0x8u /* do nothing when the name would not change */
kq_status KQCopyMediumFile(const kq_char* source, const kq_char* target_folder, uint32_t flags,
                           kq_char* buffer, uint32_t buffer_chars);
/* The volume name stored in a disk or CD image (ADF, ADZ, DMS, extended ADF, IPF through the
 * CAPSImg library, HDF and HDZ: the first partition's volume, ISO and CUE: the ISO 9660 volume
 * identifier), cut to buffer_chars - 1 characters and a NUL; empty when the image holds none.
 * Compressed images are inflated only as far as the name lies. KQ_E_INVALIDARG for a null
 * argument or a zero buffer_chars; KQ_E_FAIL when the image cannot be read (the buffer is then
 * not touched). */
kq_status KQGetVolumeName(const kq_char* image_path, kq_char* buffer, uint32_t buffer_chars);
/* Resolves the boot tag of a manifest (kq9/application/configuration/boot and its "type":
 * adf, hdf or dir) into a path under data_root: Shared\adf\amiga-os-<tag>-workbench.adf or
 * Shared\adf\<tag>.adf (aros-latest: the newest Shared\adf\aros-*-boot.adf),
 * Shared\hdf\<tag>.hdf when it exists and the tag does not start with a digit, else
 * Shared\hdf\workbench-<tag>.hdf, Shared\dir\System (3x0) or Shared\dir\AROS (aros). *path
 * (may be null) receives the path from the global heap (GlobalFree). KQ_E_INVALIDARG for a
 * null manifest or root, a non-zero operation, an unknown type or dir tag; a manifest without
 * a boot element or type returns the lookup's status (KQ_STATUS_FROM_WIN32(1168)), an empty
 * boot element KQ_E_FAIL. */
kq_status KQBootTag(const char* manifest_utf8, const kq_char* data_root, uint32_t operation,
                    kq_char** path);
/* Device commands: category 2 (low byte) with model "a-cdtv", the CD buttons (0 Play/Pause,
 * 1 Previous, 2 Next, 3 Stop, 4 Forward, 5 Rewind); category 7, the keyboard (0 Left Amiga,
 * 1 Right Amiga, 2 Soft Reset, 3 Help; the name is followed by a tab and the keys' names joined
 * with "+"). *command receives a new record (local heap, KQFreeDeviceCommand) and KQ_S_OK, or
 * NULL and KQ_S_FALSE when there is no such command. KQ_E_INVALIDARG for a null command. */
kq_status KQGetDeviceCommand(uint32_t index, uint32_t category, uint32_t reserved1,
                             uint32_t reserved2, const kq_char* model_id,
                             KQDeviceCommand** command);
/* Always KQ_S_OK; NULL does nothing. */
kq_status KQFreeDeviceCommand(KQDeviceCommand* command);

/* ==== Keyboard and input: exports/exports_keyboard.cpp ==== */

/* The first five return the status in a 64-bit value.
 *
 * KQGetKeyboardInputData2 makes the record of one host keyboard for a guest system and layout
 * (layout_id NULL: the layout that the keymap image represents; unknown layouts: "en-us").
 * key_a, key_b, key_c choose the host keys for Left Amiga, Right Amiga and Help: a descriptor
 * 0x0101xxvv names virtual key vv (extended when bit 8 is set); any other value keeps the
 * default (Left Windows, Right Windows, Page Down, all extended). On entry *data may hold the
 * caller's current record, which is replaced (and freed) on success. KQ_E_POINTER for a null
 * data pointer, KQ_E_OUTOFMEMORY, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) without a system id.
 * The record comes from the global heap; free it with KQFreeKeyboardInputData only.
 *
 * KQProcessKeyboardInput takes one host key message (bits 0-7 virtual key, 16-17 extended,
 * 18-19 character mode: 1 translate `character`, 3 defer it; bit 20 key down; bit 28 fetch the
 * next queued event instead) and answers raw key event words: bit 31 valid, bit 30 release,
 * bit 29 press, bit 28 more events pending (fetch them), bits 0-6 the Amiga raw key. KQ_S_OK;
 * KQ_E_FAIL when a fetch finds no event (answer untouched); KQ_E_INVALIDARG for a null record.
 * KQPreprocessKeyboardInput and KQProcessKeyboardInput accept a null answer pointer: the call
 * has its effect on the record (a fetched event leaves the queue) and the answer is dropped. */
int64_t KQGetKeyboardInputData(const kq_char* system_id, const kq_char* layout_id,
                               const uint8_t* keymap, uint32_t keymap_bytes, uint32_t key_a,
                               uint32_t key_b, uint32_t reserved, KQKeyboardInputData** data);
int64_t KQGetKeyboardInputData2(const kq_char* system_id, const kq_char* layout_id,
                                const uint8_t* keymap, uint32_t keymap_bytes, uint32_t key_a,
                                uint32_t key_b, uint32_t key_c, uint32_t reserved,
                                KQKeyboardInputData** data);
int64_t KQFreeKeyboardInputData(KQKeyboardInputData* data);
int64_t KQPreprocessKeyboardInput(uint64_t host_key, uint64_t unused, KQKeyboardInputData* data,
                                  uint32_t flags, uint32_t* answer);
int64_t KQProcessKeyboardInput(uint64_t host_key, uint64_t character, KQKeyboardInputData* data,
                               uint32_t flags, uint32_t* answer);
/* The layout id, a tab and the layout's name ("de-de\tGerman - Germany") of a keymap image
 * (version 1, 658 bytes; any other bytes give the default "en-us"); KQ_STATUS_FROM_WIN32(111)
 * (ERROR_BUFFER_OVERFLOW) unless the buffer is longer than the text; KQ_E_INVALIDARG for a
 * missing image or buffer, or one of length 0. */
kq_status KQGetKeyboardLayout(uint32_t unused, const uint8_t* keymap, uint32_t keymap_bytes,
                              kq_char* buffer, uint32_t buffer_chars);
/* The names of the keys of a combination ("CONTROL+LEFT AMIGA", "!"), one NUL-terminated name
 * per stroke, back to back ("Shift+1"); KQ_STATUS_FROM_WIN32(111) (ERROR_BUFFER_OVERFLOW) when
 * the buffer runs out, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for a token that names nothing or
 * without a system id, KQ_E_INVALIDARG for a missing text or buffer or a buffer_chars of 0. */
kq_status KQGetKeyDisplayName(const kq_char* key_text, const kq_char* system_id,
                              const kq_char* layout_id, kq_char* buffer, uint32_t buffer_chars,
                              uint32_t key_a, uint32_t key_b);
/* The raw key string ("KEY_RAW_DOWN 0x60 KEY_RAW_UP 0x60 ...") that makes the guest type `text`
 * (mode 0) or press (bit 0) or release (bit 1 alone) the key combination `text` names, in the
 * record's layout. From the global heap; free it with KQFreeStringRawKeys. KQ_E_POINTER for a
 * null result pointer; KQ_S_OK and no string for a null text; KQ_E_INVALIDARG for a null record. */
#define KQ_RAW_KEYS_TYPE 0x0u    /* type `text`, character by character */
#define KQ_RAW_KEYS_PRESS 0x1u   /* press the keys of the combination `text` names */
#define KQ_RAW_KEYS_RELEASE 0x2u /* release them (counts only without KQ_RAW_KEYS_PRESS) */
kq_status KQGetStringRawKeys(const kq_char* text, KQKeyboardInputData* data, uint32_t mode,
                             kq_char** keys);
kq_status KQFreeStringRawKeys(kq_char* keys);
/* 1 backs up the keyboard settings, 2 restores the backup (and removes it), 3 discards it;
 * KQ_S_OK also when there is nothing to copy, KQ_E_INVALIDARG for any other action. */
kq_status KQBackupKeyboardSettings(uint32_t action);
/* The name of button `mask` (one bit) on a controller of `kind` (2 two-button joystick,
 * 3 three-button joystick, 4 seven-button game pad), cut to the buffer; buffer may be NULL
 * and buffer_chars 0 (KQ_S_OK, nothing written).
 * HRESULT_FROM_WIN32(ERROR_NOT_FOUND), buffer untouched, for a pair that has no name. */
kq_status KQGetInputButtonName(uint32_t mask, uint32_t unused, uint32_t kind, kq_char* buffer,
                               uint32_t buffer_chars);

/* ==== Windows of the host's shell: exports/exports_shell_windows.cpp ==== */

/* Windows of the host's shell that this module does not provide: always KQ_E_NOTIMPL.
 * Any arguments the host passes are ignored. */
kq_status KQ9Editor(void);
kq_status KQEditScreenClip(void);
kq_status KQEditScreenClip2(void);
kq_status KQROMToolbox(void);
kq_status KQOpenKeyboardWindow(void);
kq_status KQSetKeyboardWindow(void);
kq_status KQResetKeyboardWindow(void);
kq_status KQGetKeyboardWindowInfo(void);
kq_status KQGetKeyDialog2(void);
kq_status KQProcessVButtonEditMessage(void);
kq_status KQProcessVButtonEditMessage2(void);

#ifdef __cplusplus
}
#endif

#endif /* KQ_AMIGA_H */
