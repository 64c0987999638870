// Event tracing that keeps all events in memory. The system's own can't be used: a session takes an administrator on
// windows, and under Wine the functions succeed without doing anything.
#pragma once

#include "diag/marker_provider.h"
#include "support/own_settings.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qxtest
{

// Takes the place of the system's event tracing, with markers allowed, as long as it exists.
class FakeTracing : public qx::clsAdvAPI32
{
public:
    struct Event
    {
        REGHANDLE provider;
        EVENT_DESCRIPTOR descriptor;
        std::vector<std::string> pieces;
        DWORD threadId;

        // Returns a piece that is text, without its terminator.
        std::wstring_view Text(std::size_t piece) const
        {
            const std::string& bytes = pieces.at(piece);
            return {reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t) - 1};
        }
    };

    explicit FakeTracing(bool isListening = true, const wchar_t* allowed = L"True") : session{isListening}
    {
        _current = this;
        _module = GetModuleHandleW(nullptr);
        _freeOnDestruction = 0;
        _getProcAddress = Find;
        if (allowed)
            _settings.Set(HKEY_CURRENT_USER, L"SupportConcurrencyVisualizer", allowed);
        qx::SetTracingLibrary(this);
    }
    ~FakeTracing() override { qx::SetTracingLibrary(nullptr); }

    // Changes the session as seen by all providers.
    void Listen(bool isListening, UCHAR level = 0, ULONGLONG any = ~0ULL, ULONGLONG all = 0)
    {
        const std::lock_guard lock(_mutex);
        session = {isListening, level, any, all};
        for (const auto& [handle, provider] : _providers)
            Tell(provider);
    }

    std::vector<Event> Events() const
    {
        const std::lock_guard lock(_mutex);
        return _events;
    }
    // Returns the events without the manifests as text: "> LANE: TEXT" and "< LANE" for spans, "- LANE: TEXT" for
    // messages.
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (const Event& event : Events())
        {
            const int id = event.descriptor.Id;
            if (id == 0xFFFE)
                continue;
            const std::size_t lane = id == 4 ? 3 : 4;
            std::string line = id == 1 ? "> " : id == 2 ? "< " : "- ";
            line += qx::String(event.Text(lane)).NarrowText();
            lines.push_back(id == 2 ? line : line + ": " + qx::String(event.Text(lane + 1)).NarrowText());
        }
        return lines;
    }
    std::size_t Registered() const { return _providers.size(); }

    struct Session
    {
        bool isListening;
        UCHAR level = 0;
        ULONGLONG any = ~0ULL;
        ULONGLONG all = 0;
    } session;
    std::string missing; // the name of a function that the library lacks
    ULONG registerResult = 0;
    ULONG writeResult = 0;
    std::size_t registrations = 0;

private:
    struct Provider
    {
        GUID id;
        PENABLECALLBACK callback;
        void* context;
    };

    void Tell(const Provider& provider) const
    {
        provider.callback(
            &provider.id, session.isListening, session.level, session.any, session.all, nullptr, provider.context);
    }

    static FARPROC WINAPI Find(HMODULE, LPCSTR name)
    {
        const std::string_view wanted = name;
        if (wanted == _current->missing)
            return nullptr;
        return wanted == "EventRegister"     ? reinterpret_cast<FARPROC>(&Register)
               : wanted == "EventWrite"      ? reinterpret_cast<FARPROC>(&Write)
               : wanted == "EventUnregister" ? reinterpret_cast<FARPROC>(&Unregister)
                                             : nullptr;
    }
    static ULONG WINAPI Register(LPCGUID id, PENABLECALLBACK callback, void* context, REGHANDLE* handle)
    {
        const std::lock_guard lock(_current->_mutex);
        if (_current->registerResult != 0)
            return _current->registerResult;
        *handle = ++_current->registrations;
        const Provider& provider = _current->_providers[*handle] = {*id, callback, context};
        if (_current->session.isListening)
            _current->Tell(provider);
        return 0;
    }
    static ULONG WINAPI Write(
        REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor, ULONG count, EVENT_DATA_DESCRIPTOR* data)
    {
        const std::lock_guard lock(_current->_mutex);
        Event& event = _current->_events.emplace_back(Event{handle, *descriptor, {}, GetCurrentThreadId()});
        for (ULONG piece = 0; piece < count; ++piece)
            event.pieces.emplace_back(reinterpret_cast<const char*>(data[piece].Ptr), data[piece].Size);
        return _current->writeResult;
    }
    static ULONG WINAPI Unregister(REGHANDLE handle)
    {
        const std::lock_guard lock(_current->_mutex);
        return _current->_providers.erase(handle) == 1 ? 0 : ERROR_INVALID_HANDLE;
    }

    inline static FakeTracing* _current = nullptr;

    OwnSettings _settings;
    mutable std::mutex _mutex;
    std::map<REGHANDLE, Provider> _providers;
    std::vector<Event> _events;
};

} // namespace qxtest
