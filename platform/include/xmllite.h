// A pull reader for XML.
#pragma once

#include <objidl.h>

EXTERN_C const IID IID_IXmlReader QXP(IID_IXmlReader);

typedef enum XmlNodeType
{
    XmlNodeType_None = 0,
    XmlNodeType_Element = 1,
    XmlNodeType_Attribute = 2,
    XmlNodeType_Text = 3,
    XmlNodeType_CDATA = 4,
    XmlNodeType_ProcessingInstruction = 7,
    XmlNodeType_Comment = 8,
    XmlNodeType_DocumentType = 10,
    XmlNodeType_Whitespace = 13,
    XmlNodeType_EndElement = 15,
    XmlNodeType_XmlDeclaration = 17,
    _XmlNodeType_Last = 17
} XmlNodeType;

#ifdef __cplusplus

// Texts are terminated and valid until the next call of Read.
struct IXmlReader : IUnknown
{
    // Sets an ISequentialStream, which is read from its current position. Null removes the input.
    virtual HRESULT STDMETHODCALLTYPE SetInput(IUnknown* pInput) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(UINT nProperty, LONG_PTR* ppValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperty(UINT nProperty, LONG_PTR pValue) = 0;
    // Moves to the next node. Returns S_FALSE at the end of the document.
    virtual HRESULT STDMETHODCALLTYPE Read(XmlNodeType* pNodeType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNodeType(XmlNodeType* pNodeType) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToFirstAttribute() = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToNextAttribute() = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToAttributeByName(LPCWSTR pwszLocalName, LPCWSTR pwszNamespaceUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetQualifiedName(LPCWSTR* ppwszQualifiedName, UINT* pcwchQualifiedName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamespaceUri(LPCWSTR* ppwszNamespaceUri, UINT* pcwchNamespaceUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLocalName(LPCWSTR* ppwszLocalName, UINT* pcwchLocalName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPrefix(LPCWSTR* ppwszPrefix, UINT* pcwchPrefix) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetValue(LPCWSTR* ppwszValue, UINT* pcwchValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReadValueChunk(WCHAR* pwchBuffer, UINT cwchChunkSize, UINT* pcwchRead) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBaseUri(LPCWSTR* ppwszBaseUri, UINT* pcwchBaseUri) = 0;
    virtual BOOL STDMETHODCALLTYPE IsDefault() = 0;
    virtual BOOL STDMETHODCALLTYPE IsEmptyElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLineNumber(UINT* pnLineNumber) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLinePosition(UINT* pnLinePosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAttributeCount(UINT* pnAttributeCount) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDepth(UINT* pnDepth) = 0;
    virtual BOOL STDMETHODCALLTYPE IsEOF() = 0;
};

#else
typedef struct IXmlReader IXmlReader;
#endif

// `pMalloc` must be null.
EXTERN_C HRESULT WINAPI CreateXmlReader(REFIID riid, void** ppvObject, struct IMalloc* pMalloc) QXP(CreateXmlReader);
