// Objects of the shell: shortcuts, and files with properties.
#pragma once

#include <minwinbase.h>
#include <propsys.h>

EXTERN_C const IID IID_IPersist QXP(IID_IPersist);
EXTERN_C const IID IID_IPersistFile QXP(IID_IPersistFile);
EXTERN_C const IID IID_IShellLinkW QXP(IID_IShellLinkW);
EXTERN_C const CLSID CLSID_ShellLink QXP(CLSID_ShellLink);

// Forms of a shortcut's path.
#define SLGP_SHORTPATH 0x1
#define SLGP_UNCPRIORITY 0x2
#define SLGP_RAWPATH 0x4

// How a shortcut is resolved.
#define SLR_NO_UI 0x1
#define SLR_ANY_MATCH 0x2

// Which properties of a file are read.
typedef int GETPROPERTYSTOREFLAGS;
#define GPS_BESTEFFORT 0x40

#ifdef __cplusplus

struct ITEMIDLIST;

struct IPersist : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) = 0;
};

struct IPersistFile : public IPersist
{
    virtual HRESULT STDMETHODCALLTYPE IsDirty() = 0;
    virtual HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pszFileName, DWORD dwMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE Save(LPCOLESTR pszFileName, BOOL fRemember) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR pszFileName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* ppszFileName) = 0;
};

struct IShellLinkW : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetPath(LPWSTR pszFile, int cch, WIN32_FIND_DATAW* pfd, DWORD fFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDList(ITEMIDLIST** ppidl) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetIDList(const ITEMIDLIST* pidl) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(LPWSTR pszName, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPCWSTR pszName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPWSTR pszDir, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCWSTR pszDir) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArguments(LPWSTR pszArgs, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetArguments(LPCWSTR pszArgs) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHotkey(WORD* pwHotkey) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHotkey(WORD wHotkey) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetShowCmd(int* piShowCmd) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetShowCmd(int iShowCmd) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIconLocation(LPWSTR pszIconPath, int cch, int* piIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetIconLocation(LPCWSTR pszIconPath, int iIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRelativePath(LPCWSTR pszPathRel, DWORD dwReserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE Resolve(HWND hwnd, DWORD fFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPath(LPCWSTR pszFile) = 0;
};

struct IBindCtx;

struct IShellItem : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppv) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetParent(IShellItem** ppsi) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDisplayName(int sigdnName, LPWSTR* ppszName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAttributes(ULONG sfgaoMask, ULONG* psfgaoAttribs) = 0;
    virtual HRESULT STDMETHODCALLTYPE Compare(IShellItem* psi, DWORD hint, int* piOrder) = 0;
};

// Declares only the first function; the library doesn't call the others.
struct IShellItem2 : public IShellItem
{
    virtual HRESULT STDMETHODCALLTYPE GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) = 0;
};

#else
typedef struct IPersist IPersist;
typedef struct IPersistFile IPersistFile;
typedef struct IShellLinkW IShellLinkW;
#endif
