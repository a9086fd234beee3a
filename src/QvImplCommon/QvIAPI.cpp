// QvIAPI.cpp - the twenty exported functions and their one call frame.
//
// Every function but the two logging ones writes a BEGIN record, checks its
// arguments in a fixed order, calls the analyzer or one operation of the
// object, and writes an END record with the code. A barrier turns the three
// failure types (and anything else) into codes: nothing but a code and the
// out-parameters leaves the library, and out-values are stored only on
// success.
#include <new>
#include <string>

#include "QvImplCommon/QvErrors.h"
#include "QvV4Value/QvExceptions.h"
#include "QvImplCommon/QvIAnalyzer.h"
#include "QvImplCommon/QvIObjects.h"
#include "QvImplCommon/QvITraceRecord.h"
#include "tqnralm.h"

#define QV_SOURCE "QvImplCommon\\QvIAPI"

namespace {

class CApiCall {
public:
    CApiCall(const char* pszName, int32_t nLine) : m_pszName(pszName), m_nLine(nLine) {}

    // "<name>(" ; the caller appends its arguments and ") BEGIN".
    CQvITraceRecord Begin() const {
        CQvITraceRecord record(QV_SOURCE, m_nLine, QV_TRACE_BEGIN);
        record.Ascii(m_pszName).Ascii("(");
        return record;
    }
    // "<name>() END; return(<code>) " ; the caller appends the detail.
    CQvITraceRecord End(int32_t nCode) const {
        CQvITraceRecord record(QV_SOURCE, m_nLine, QV_TRACE_END);
        record.Ascii(m_pszName).Ascii("() END; return(").Signed(nCode).Ascii(") ");
        return record;
    }
    int32_t RefuseNull(const char* pszParam) const {
        CQvITraceRecord(QV_SOURCE, m_nLine, QV_TRACE_ERROR).Ascii(m_pszName).Ascii("() : ").Ascii(pszParam)
            .Text(u"が NULL").Write();
        End(QV_E_INVALID_ARGUMENT).Write();
        return QV_E_INVALID_ARGUMENT;
    }
    int32_t RefuseClass() const {
        CQvITraceRecord(QV_SOURCE, m_nLine, QV_TRACE_ERROR).Ascii(m_pszName).Text(u"() : オブジェクトクラスが不正")
            .Write();
        End(QV_E_INVALID_ARGUMENT).Write();
        return QV_E_INVALID_ARGUMENT;
    }
    // The END record of a caught failure. It may fail in turn, and then the
    // code still goes back to the host.
    int32_t Caught(int32_t nCode, const char16_t* pszDetail, const int32_t* pnCause = nullptr) const noexcept {
        try {
            CQvITraceRecord record = End(nCode);
            record.Text(pszDetail);
            if (pnCause != nullptr) record.Signed(*pnCause);
            record.Write();
        } catch (...) {
        }
        return nCode;
    }

private:
    const char* m_pszName;
    int32_t m_nLine;
};

template <typename Body>
int32_t Barrier(const CApiCall& call, Body&& body) noexcept {
    try {
        return body();
    } catch (const CMemoryException&) {
        return call.Caught(QV_E_OUT_OF_MEMORY, u"CMemoryException をキャッチ");
    } catch (const std::bad_alloc&) {
        return call.Caught(QV_E_OUT_OF_MEMORY, u"CMemoryException をキャッチ");
    } catch (const CFileException& e) {
        int32_t nCause = e.m_cause;  // read before the exception object goes
        return call.Caught(QvFileCauseToError(nCause), u"CFileException をキャッチ", &nCause);
    } catch (...) {
        return call.Caught(QV_E_UNEXPECTED, u"CException をキャッチ");
    }
}

// Logging's own barrier: the same codes, no records.
template <typename Body>
int32_t SilentBarrier(Body&& body) noexcept {
    try {
        return body();
    } catch (const CMemoryException&) {
        return QV_E_OUT_OF_MEMORY;
    } catch (const std::bad_alloc&) {
        return QV_E_OUT_OF_MEMORY;
    } catch (const CFileException& e) {
        return QvFileCauseToError(e.m_cause);
    } catch (...) {
        return QV_E_UNEXPECTED;
    }
}

CQvIObject* AsObject(QV_OBJ qvObj) { return static_cast<CQvIObject*>(qvObj); }

// The class test of the enumerator and data functions; a failing GetClass
// counts as a wrong class.
bool HasClass(CQvIObject* pObject, int32_t nClass) {
    int32_t nActual = 0;
    return pObject->GetClass(&nActual) == QV_S_OK && nActual == nClass;
}

// A host's text as 16-bit units, read no further than nMax units.
std::u16string HostText(const QV_WCHAR* psz, uint32_t nMax) {
    std::u16string text;
    for (uint32_t i = 0; i < nMax && psz[i] != 0; ++i) text.push_back(static_cast<char16_t>(psz[i]));
    return text;
}

int32_t GetNameFrame(const CApiCall& call, QV_OBJ qvObj, QV_WCHAR* lpszName, uint32_t* lpcNameLen, bool bDisplay) {
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(", *lpcNameLen=")
            .Unsigned(lpcNameLen != nullptr ? *lpcNameLen : 0).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (lpcNameLen == nullptr) return call.RefuseNull("lpcNameLen");
        // The buffer holds the count passed in plus a terminator.
        const uint32_t nCapacity = *lpcNameLen;
        int32_t code = bDisplay ? AsObject(qvObj)->GetDisplayName(lpszName, lpcNameLen)
                                : AsObject(qvObj)->GetName(lpszName, lpcNameLen);
        CQvITraceRecord end = call.End(code);
        end.Ascii("lpszName=");
        if (end.IsEnabled()) {
            if (lpszName == nullptr) end.Text(nullptr);
            else end.Text(HostText(lpszName, nCapacity + 1).c_str());
        }
        end.Ascii(", *lpcNameLen=").Unsigned(*lpcNameLen).Write();
        return code;
    });
}

}  // namespace

extern "C" {

QV_EXPORT int32_t QV_API QV_Object_GetClass(QV_OBJ qvObj, int32_t* pnClass) {
    CApiCall call("QV_Object_GetClass", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (pnClass == nullptr) return call.RefuseNull("pnClass");
        int32_t code = AsObject(qvObj)->GetClass(pnClass);
        call.End(code).Ascii("*pnClass=").Signed(*pnClass).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_GetName(QV_OBJ qvObj, QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetNameFrame(CApiCall("QV_Object_GetName", __LINE__), qvObj, lpszName, lpcNameLen, false);
}

QV_EXPORT int32_t QV_API QV_Object_GetDisplayName(QV_OBJ qvObj, QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetNameFrame(CApiCall("QV_Object_GetDisplayName", __LINE__), qvObj, lpszName, lpcNameLen, true);
}

QV_EXPORT int32_t QV_API QV_Object_GetAttributes(QV_OBJ qvObj, uint32_t* pdwAttribute) {
    CApiCall call("QV_Object_GetAttributes", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (pdwAttribute == nullptr) return call.RefuseNull("pdwAttribute");
        int32_t code = AsObject(qvObj)->GetAttributes(pdwAttribute);
        call.End(code).Ascii("*pdwAttribute=").Hex(*pdwAttribute).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_GetChildCount(QV_OBJ qvObj, int32_t nClass, int32_t* pnChildCount) {
    CApiCall call("QV_Object_GetChildCount", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(", nClass=").Signed(nClass).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (pnChildCount == nullptr) return call.RefuseNull("pnChildCount");
        int32_t code = AsObject(qvObj)->GetChildCount(nClass, pnChildCount);
        call.End(code).Ascii("*pnChildCount=").Signed(*pnChildCount).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_GetChildObjects(QV_OBJ qvObj, int32_t nClass, QV_OBJ* pqvObjs) {
    CApiCall call("QV_Object_GetChildObjects", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(", nClass=").Signed(nClass).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (pqvObjs == nullptr) return call.RefuseNull("pqvObjs");
        CQvIObject* pObjs = nullptr;
        int32_t code = AsObject(qvObj)->GetChildObjects(nClass, &pObjs);
        if (code == QV_S_OK) *pqvObjs = pObjs;
        call.End(code).Ascii("*pqvObjs=").Pointer(*pqvObjs).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_HasPassword(QV_OBJ qvObj, QV_BOOL* pbHasPassword) {
    CApiCall call("QV_Object_HasPassword", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (pbHasPassword == nullptr) return call.RefuseNull("pbHasPassword");
        int32_t code = AsObject(qvObj)->HasPassword(pbHasPassword);
        call.End(code).Ascii("*pbHasPassword=").Bool(*pbHasPassword).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_Logon(QV_OBJ qvObj, const QV_WCHAR* lpszPassword) {
    CApiCall call("QV_Object_Logon", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        // The password is never traced.
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        if (lpszPassword == nullptr) return call.RefuseNull("lpszPassword");
        int32_t code = AsObject(qvObj)->Logon(lpszPassword);
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Object_Dispose(QV_OBJ qvObj) {
    CApiCall call("QV_Object_Dispose", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObj=").Pointer(qvObj).Ascii(") BEGIN").Write();
        if (qvObj == nullptr) return call.RefuseNull("qvObj");
        int32_t code = AsObject(qvObj)->Dispose();
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Objects_HasNext(QV_OBJ qvObjs, QV_BOOL* pbHasNext) {
    CApiCall call("QV_Objects_HasNext", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObjs=").Pointer(qvObjs).Ascii(") BEGIN").Write();
        if (qvObjs == nullptr) return call.RefuseNull("qvObjs");
        if (pbHasNext == nullptr) return call.RefuseNull("pbHasNext");
        if (!HasClass(AsObject(qvObjs), QV_CLASS_OBJECTS)) return call.RefuseClass();
        int32_t code = static_cast<CQvIObjects*>(AsObject(qvObjs))->HasNext(pbHasNext);
        call.End(code).Ascii("*pbHasNext=").Bool(*pbHasNext).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Objects_GetNext(QV_OBJ qvObjs, QV_OBJ* pqvChildObj) {
    CApiCall call("QV_Objects_GetNext", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObjs=").Pointer(qvObjs).Ascii(") BEGIN").Write();
        if (qvObjs == nullptr) return call.RefuseNull("qvObjs");
        if (pqvChildObj == nullptr) return call.RefuseNull("pqvChildObj");
        if (!HasClass(AsObject(qvObjs), QV_CLASS_OBJECTS)) return call.RefuseClass();
        CQvIObject* pChild = nullptr;
        int32_t code = static_cast<CQvIObjects*>(AsObject(qvObjs))->GetNext(&pChild);
        if (code == QV_S_OK) *pqvChildObj = pChild;
        call.End(code).Ascii("*pqvChildObj=").Pointer(*pqvChildObj).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_MailMessage_GetData(QV_OBJ qvObjMailMessage, QV_MAIL_DATA* pMailData) {
    CApiCall call("QV_MailMessage_GetData", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObjMailMessage=").Pointer(qvObjMailMessage).Ascii(") BEGIN").Write();
        if (qvObjMailMessage == nullptr) return call.RefuseNull("qvObjMailMessage");
        if (pMailData == nullptr) return call.RefuseNull("pMailData");
        if (!HasClass(AsObject(qvObjMailMessage), QV_CLASS_MAILMESSAGE)) return call.RefuseClass();
        int32_t code = static_cast<CQvIMailMessage*>(AsObject(qvObjMailMessage))->GetData(pMailData);
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_Address_GetData(QV_OBJ qvObjAddress, QV_ADDRESS_DATA* pAddressData) {
    CApiCall call("QV_Address_GetData", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii("qvObjAddress=").Pointer(qvObjAddress).Ascii(") BEGIN").Write();
        if (qvObjAddress == nullptr) return call.RefuseNull("qvObjAddress");
        if (pAddressData == nullptr) return call.RefuseNull("pAddressData");
        if (!HasClass(AsObject(qvObjAddress), QV_CLASS_ADDRESS)) return call.RefuseClass();
        int32_t code = static_cast<CQvIAddress*>(AsObject(qvObjAddress))->GetData(pAddressData);
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_StartLogging(const QV_WCHAR* lpszLogFile) {
    return SilentBarrier([&]() -> int32_t {
        if (lpszLogFile == nullptr) return QV_E_INVALID_ARGUMENT;
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
        return pAnalyzer->StartLogging(lpszLogFile);
    });
}

QV_EXPORT int32_t QV_API QV_EndLogging(void) {
    return SilentBarrier([&]() -> int32_t {
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
        return pAnalyzer->EndLogging();
    });
}

QV_EXPORT int32_t QV_API QV_InitLibrary(void) {
    CApiCall call("QV_InitLibrary", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii(") BEGIN").Write();
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) {
            call.End(QV_E_UNEXPECTED).Write();
            return QV_E_UNEXPECTED;
        }
        int32_t code = pAnalyzer->InitLibrary();
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_ExitLibrary(void) {
    CApiCall call("QV_ExitLibrary", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii(") BEGIN").Write();
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) {
            call.End(QV_E_UNEXPECTED).Write();
            return QV_E_UNEXPECTED;
        }
        int32_t code = pAnalyzer->ExitLibrary();
        // Logging has ended by now, so this record finds it off.
        call.End(code).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_GetVersion(void) {
    CApiCall call("QV_GetVersion", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii(") BEGIN").Write();
        call.End(QV_VERSION).Write();
        return QV_VERSION;
    });
}

QV_EXPORT int32_t QV_API QV_IsMailerInstalled(QV_BOOL* pbIsInstalled) {
    CApiCall call("QV_IsMailerInstalled", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii(") BEGIN").Write();
        if (pbIsInstalled == nullptr) return call.RefuseNull("pbIsInstalled");
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) {
            call.End(QV_E_UNEXPECTED).Write();
            return QV_E_UNEXPECTED;
        }
        int32_t code = pAnalyzer->IsMailerInstalled(pbIsInstalled);
        call.End(code).Ascii("*pbIsInstalled=").Bool(*pbIsInstalled).Write();
        return code;
    });
}

QV_EXPORT int32_t QV_API QV_GetRootObject(QV_OBJ* pqvObjRoot) {
    CApiCall call("QV_GetRootObject", __LINE__);
    return Barrier(call, [&]() -> int32_t {
        call.Begin().Ascii(") BEGIN").Write();
        if (pqvObjRoot == nullptr) return call.RefuseNull("pqvObjRoot");
        CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
        if (pAnalyzer == nullptr) {
            call.End(QV_E_UNEXPECTED).Text(u"CQvIAnalyzer::GetInstance() が NULL").Write();
            return QV_E_UNEXPECTED;
        }
        CQvIObject* pRoot = nullptr;
        int32_t code = pAnalyzer->GetRootObject(&pRoot);
        if (code == QV_S_OK) *pqvObjRoot = pRoot;
        call.End(code).Ascii("*pqvObjRoot=").Pointer(*pqvObjRoot).Write();
        return code;
    });
}

}  // extern "C"
