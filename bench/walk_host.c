/*
 * walk_host - walks every message of the machine's mail store through the
 * exported functions, as a migration does: each message's name, display name
 * and whole text. Prints what it saw, the wall time of the walk (the
 * library's start and the tree's first levels included), the time spent in
 * the folders' message lists alone, and the peak resident set.
 *
 *   WINEPREFIX=DIR walk_host
 *   messages=100000 failed=0 bytes=206900000 seconds=1.234 message_seconds=1.200 peak_rss_kb=5120
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <time.h>

#include "tqnralm.h"

static long g_messages, g_failed;
static double g_messageSeconds; /* in the folders' message lists alone */
static unsigned long long g_bytes;

static double Now(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec + (double)t.tv_nsec / 1e9;
}

/* The peak resident set in kB, as the kernel reports it (VmHWM); 0 when unknown. */
static long PeakRssKb(void) {
    char line[256];
    long kb = 0;
    FILE* status = fopen("/proc/self/status", "r");
    if (status == NULL) return 0;
    while (fgets(line, sizeof line, status) != NULL) {
        if (sscanf(line, "VmHWM: %ld", &kb) == 1) break;
    }
    fclose(status);
    return kb;
}

static void Message(QV_OBJ message) {
    QV_WCHAR text[512]; /* a count of units, and room for a terminator after them */
    uint32_t len = 511;
    QV_MAIL_DATA data;
    QV_Object_GetName(message, text, &len);
    len = 511;
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
    double start;
    Each(folder, QV_CLASS_MAILFOLDER, Folder);
    start = Now();
    Each(folder, QV_CLASS_MAILMESSAGE, Message);
    g_messageSeconds += Now() - start;
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
    const double seconds = Now() - start;
    printf("messages=%ld failed=%ld bytes=%llu seconds=%.3f message_seconds=%.3f peak_rss_kb=%ld\n", g_messages,
           g_failed, g_bytes, seconds, g_messageSeconds, PeakRssKb());
    return 0;
}
