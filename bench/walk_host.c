/*
 * walk_host - walks every message of the machine's mail store through the
 * exported functions, as a migration does: each message's name, display name
 * and whole text. Prints what it saw and the wall time of the walk (the
 * library's start and the tree's first levels included).
 *
 *   WINEPREFIX=DIR walk_host
 *   messages=100000 failed=0 bytes=206900000 seconds=1.234
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <time.h>

#include "tqnralm.h"

static long g_messages, g_failed;
static unsigned long long g_bytes;

static double Now(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec + (double)t.tv_nsec / 1e9;
}

static void Message(QV_OBJ message) {
    QV_WCHAR text[512];
    uint32_t len = 512;
    QV_MAIL_DATA data;
    QV_Object_GetName(message, text, &len);
    len = 512;
    QV_Object_GetDisplayName(message, text, &len);
    ++g_messages;
    if (QV_MailMessage_GetData(message, &data) != QV_S_OK) {
        ++g_failed;
        return;
    }
    g_bytes += data.nMailTextLen;
    data.pfnFree(data.pszMailText);
}

/* Every child of the given class, handed to visit, then disposed. */
static void Each(QV_OBJ parent, int32_t nClass, void (*visit)(QV_OBJ)) {
    QV_OBJ objs = NULL, child = NULL;
    if (QV_Object_GetChildObjects(parent, nClass, &objs) != QV_S_OK) return;
    while (QV_Objects_GetNext(objs, &child) == QV_S_OK) {
        visit(child);
        QV_Object_Dispose(child);
    }
    QV_Object_Dispose(objs);
}

static void Folder(QV_OBJ folder) {
    Each(folder, QV_CLASS_MAILFOLDER, Folder);
    Each(folder, QV_CLASS_MAILMESSAGE, Message);
}

static void Account(QV_OBJ account) { Each(account, QV_CLASS_MAILFOLDER, Folder); }

static void User(QV_OBJ user) { Each(user, QV_CLASS_ACCOUNT, Account); }

int main(void) {
    QV_OBJ root = NULL;
    const double start = Now();
    if (QV_InitLibrary() != QV_S_OK || QV_GetRootObject(&root) != QV_S_OK) {
        fprintf(stderr, "walk_host: no mail client on this machine (WINEPREFIX)\n");
        return 1;
    }
    Each(root, QV_CLASS_USER, User);
    QV_Object_Dispose(root);
    QV_ExitLibrary();
    printf("messages=%ld failed=%ld bytes=%llu seconds=%.3f\n", g_messages, g_failed, g_bytes, Now() - start);
    return 0;
}
