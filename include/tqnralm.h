/*
 * tqnralm.h - the one public header of TQNRALM.
 *
 * TQNRALM reads the local data of the mail client AL-Mail32 (users, accounts,
 * mail folders, messages, address books, groups and addresses) and presents
 * it as one tree of reference-counted objects behind twenty C functions.
 * Every function returns a result code (0 or a negative QV_E_ value) except
 * QV_GetVersion, which returns the interface version.
 *
 * Plain C; usable from C and C++ hosts.
 */
#ifndef TQNRALM_H
#define TQNRALM_H

#include <stdint.h>

#if defined(_WIN32)
#  include <wchar.h>
#  define QV_API __stdcall
#  define QV_EXPORT
typedef wchar_t QV_WCHAR;
#else
#  if !defined(__cplusplus)
#    include <uchar.h>
#  endif
#  define QV_API
#  if defined(TQNRALM_BUILDING)
#    define QV_EXPORT __attribute__((visibility("default")))
#  else
#    define QV_EXPORT
#  endif
typedef char16_t QV_WCHAR;
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* An object handle: the object's own address. */
typedef void* QV_OBJ;
/* 32-bit truth value: 0 false, 1 true. */
typedef int32_t QV_BOOL;

/* Interface version returned by QV_GetVersion: 5.0. */
#define QV_VERSION 0x50000

/* Class numbers. */
#define QV_CLASS_ROOT          1
#define QV_CLASS_OBJECTS       2
#define QV_CLASS_USER          3
#define QV_CLASS_ACCOUNT       4
#define QV_CLASS_MAILFOLDER    5
#define QV_CLASS_MAILMESSAGE   6
#define QV_CLASS_ADDRESSBOOK   7
#define QV_CLASS_ADDRESSGROUP  8
#define QV_CLASS_ADDRESS       9

/* Result codes. -4, -6 and -11 are not assigned. */
#define QV_S_OK                  0
#define QV_E_UNEXPECTED         (-1)
#define QV_E_ACCESS_DENIED      (-2)
#define QV_E_BAD_PATH           (-3)
#define QV_E_DISK_FULL          (-5)
#define QV_E_INVALID_ARGUMENT   (-7)
#define QV_E_NO_MORE_ITEMS      (-8)
#define QV_E_OUT_OF_MEMORY      (-9)
#define QV_E_FILE_NOT_FOUND     (-10)
#define QV_E_SHARING_VIOLATION  (-12)
#define QV_E_LOG_FILE           (-13)
#define QV_E_ALREADY_LOGGING    (-14)

/* Attribute words. */
#define QV_ATTR_ACCOUNT_HAS_BOOK  0x2
#define QV_ATTR_MAILFOLDER        0x200

/*
 * The text of one message, 8-bit as the mail client stored it. Filled by
 * QV_MailMessage_GetData; the host gives the text back with pfnFree.
 * On 32-bit Windows: 12 bytes, offsets 0, 4, 8.
 */
typedef struct QV_MAIL_DATA {
    char* pszMailText;
    uint32_t nMailTextLen;
    void (*pfnFree)(char* pszMailText);
} QV_MAIL_DATA;

/*
 * The fields of one address, 16-bit texts in blocks of the library, 0 where
 * the address has no value. Filled by QV_Address_GetData; the host gives the
 * record back with pfnRelease. On 32-bit Windows: 144 bytes.
 */
typedef struct QV_ADDRESS_DATA {
    void (*pfnRelease)(struct QV_ADDRESS_DATA* pAddressData); /*   0 */
    QV_WCHAR* lpszN1;               /*   4  "N-1" */
    QV_WCHAR* lpszN2;               /*   8  "N-2" */
    QV_WCHAR* lpszNS1;              /*  12  "N-S1" */
    QV_WCHAR* lpszNS2;              /*  16  "N-S2" */
    QV_WCHAR* lpszNickName;         /*  20  "NICKNAME" */
    QV_WCHAR* lpszEmailInternet;    /*  24  "EMAIL;INTERNET" */
    uintptr_t dwReserved1;          /*  28  never set, not released */
    uintptr_t dwReserved2;          /*  32  never set, not released */
    QV_WCHAR* lpszTelHomeVoice;     /*  36  "TEL;HOME;VOICE" */
    QV_WCHAR* lpszTelHomeFax;       /*  40  "TEL;HOME;FAX" */
    QV_WCHAR* lpszTelCellVoice;     /*  44  "TEL;CELL;VOICE" */
    QV_WCHAR* lpszReserved1;        /*  48  never set, released */
    QV_WCHAR* lpszAdrHome6;         /*  52  "ADR;HOME-6" */
    QV_WCHAR* lpszAdrHome7;         /*  56  "ADR;HOME-7" */
    QV_WCHAR* lpszAdrHome5;         /*  60  "ADR;HOME-5" */
    QV_WCHAR* lpszAdrHome4;         /*  64  "ADR;HOME-4" */
    QV_WCHAR* lpszAdrHome3;         /*  68  "ADR;HOME-3" */
    QV_WCHAR* lpszAdrHome2;         /*  72  "ADR;HOME-2" */
    QV_WCHAR* lpszTelWorkVoice;     /*  76  "TEL;WORK;VOICE" */
    QV_WCHAR* lpszTelWorkFax;       /*  80  "TEL;WORK;FAX" */
    QV_WCHAR* lpszReserved2;        /*  84  never set, released */
    QV_WCHAR* lpszTelPagerVoice;    /*  88  "TEL;PAGER;VOICE" */
    QV_WCHAR* lpszAdrWork6;         /*  92  "ADR;WORK-6" */
    QV_WCHAR* lpszAdrWork7;         /*  96  "ADR;WORK-7" */
    QV_WCHAR* lpszAdrWork5;         /* 100  "ADR;WORK-5" */
    QV_WCHAR* lpszAdrWork4;         /* 104  "ADR;WORK-4" */
    QV_WCHAR* lpszAdrWork3;         /* 108  "ADR;WORK-3" */
    QV_WCHAR* lpszAdrWork2;         /* 112  "ADR;WORK-2" */
    QV_WCHAR* lpszAdrOrg1;          /* 116  "ADR;ORG-1" */
    QV_WCHAR* lpszReserved3;        /* 120  never set, released */
    QV_WCHAR* lpszAdrOrg2;          /* 124  "ADR;ORG-2" */
    QV_WCHAR* lpszTitle;            /* 128  "TITLE" */
    QV_WCHAR* lpszNote;             /* 132  "NOTE" */
    int32_t nExtraCount;            /* 136  pairs in pExtra */
    QV_WCHAR** pExtra;              /* 140  nExtraCount pairs of texts */
} QV_ADDRESS_DATA;

/* Object and enumerator operations (ordinals 1 to 11). */
QV_EXPORT int32_t QV_API QV_Object_GetClass(QV_OBJ qvObj, int32_t* pnClass);
QV_EXPORT int32_t QV_API QV_Object_GetName(QV_OBJ qvObj, QV_WCHAR* lpszName, uint32_t* lpcNameLen);
QV_EXPORT int32_t QV_API QV_Object_GetDisplayName(QV_OBJ qvObj, QV_WCHAR* lpszName, uint32_t* lpcNameLen);
QV_EXPORT int32_t QV_API QV_Object_GetAttributes(QV_OBJ qvObj, uint32_t* pdwAttribute);
QV_EXPORT int32_t QV_API QV_Object_GetChildCount(QV_OBJ qvObj, int32_t nClass, int32_t* pnChildCount);
QV_EXPORT int32_t QV_API QV_Object_GetChildObjects(QV_OBJ qvObj, int32_t nClass, QV_OBJ* pqvObjs);
QV_EXPORT int32_t QV_API QV_Object_HasPassword(QV_OBJ qvObj, QV_BOOL* pbHasPassword);
QV_EXPORT int32_t QV_API QV_Object_Logon(QV_OBJ qvObj, const QV_WCHAR* lpszPassword);
QV_EXPORT int32_t QV_API QV_Object_Dispose(QV_OBJ qvObj);
QV_EXPORT int32_t QV_API QV_Objects_HasNext(QV_OBJ qvObjs, QV_BOOL* pbHasNext);
QV_EXPORT int32_t QV_API QV_Objects_GetNext(QV_OBJ qvObjs, QV_OBJ* pqvChildObj);

/* Class data (ordinals 12 and 13). */
QV_EXPORT int32_t QV_API QV_MailMessage_GetData(QV_OBJ qvObjMailMessage, QV_MAIL_DATA* pMailData);
QV_EXPORT int32_t QV_API QV_Address_GetData(QV_OBJ qvObjAddress, QV_ADDRESS_DATA* pAddressData);

/* Logging, life cycle, version, installed test, root (ordinals 14 to 20). */
QV_EXPORT int32_t QV_API QV_StartLogging(const QV_WCHAR* lpszLogFile);
QV_EXPORT int32_t QV_API QV_EndLogging(void);
QV_EXPORT int32_t QV_API QV_InitLibrary(void);
QV_EXPORT int32_t QV_API QV_ExitLibrary(void);
QV_EXPORT int32_t QV_API QV_GetVersion(void);
QV_EXPORT int32_t QV_API QV_IsMailerInstalled(QV_BOOL* pbIsInstalled);
QV_EXPORT int32_t QV_API QV_GetRootObject(QV_OBJ* pqvObjRoot);

#ifdef __cplusplus
}
#endif

#endif /* TQNRALM_H */
