// MailReader.h - the flat, handle-based functions of the mail store reader.
//
// A reader handle comes from MailReader_Open and lives until MailReader_Close.
// Record handles (users, accounts, folders) point into the reader's data and
// stay valid until the reader is closed. Texts come out in a QvV4Value that
// the caller then owns. Results: 0, -1 no memory, -2 a failure caught at the
// barrier, -3 not there or bad handle.
#ifndef QV_MAILREADER_H
#define QV_MAILREADER_H

#include <cstdint>

#include "QvV4Value/QvV4Value.h"

typedef void* MAILREADER_HANDLE;
typedef void* MAILRECORD_HANDLE;

int32_t MailReader_IsInstalled(int32_t* pbInstalled);
int32_t MailReader_Open(MAILREADER_HANDLE* phReader);
int32_t MailReader_Close(MAILREADER_HANDLE hReader);
int32_t MailReader_GetMailerName(MAILREADER_HANDLE hReader, QvV4Value* pValue);
int32_t MailReader_GetName(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hRecord, QvV4Value* pValue);
int32_t MailReader_GetDisplayName(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hRecord, QvV4Value* pValue);
int32_t MailReader_GetUserCount(MAILREADER_HANDLE hReader, int32_t* pnCount);
int32_t MailReader_GetUser(MAILREADER_HANDLE hReader, int32_t nIndex, MAILRECORD_HANDLE* phUser);
int32_t MailReader_GetAccountCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hUser, int32_t* pnCount);
int32_t MailReader_GetAccount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hUser, int32_t nIndex,
                              MAILRECORD_HANDLE* phAccount);
int32_t MailReader_GetFolderCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hBox, int32_t* pnCount);
int32_t MailReader_GetFolder(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hBox, int32_t nIndex,
                             MAILRECORD_HANDLE* phFolder);
int32_t MailReader_OpenMessages(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder);
int32_t MailReader_CloseMessages(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder);
int32_t MailReader_GetMessageCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t* pnCount);
int32_t MailReader_GetSubject(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                              QvV4Value* pValue);
int32_t MailReader_GetMessageId(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                                QvV4Value* pValue);
int32_t MailReader_GetMessageText(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                                  QvV4Value* pValue);

#endif  // QV_MAILREADER_H
