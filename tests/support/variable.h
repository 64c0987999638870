// An environment variable that child processes inherit.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qxtest
{

// Sets the variable while this object exists; null removes it.
class Variable
{
public:
    Variable(const wchar_t* name, const wchar_t* value) : _name(name)
    {
        wchar_t before[1024];
        const DWORD length = GetEnvironmentVariableW(name, before, 1024);
        _wasThere = length != 0 || GetLastError() != ERROR_ENVVAR_NOT_FOUND;
        if (_wasThere)
            _before = before;
        SetEnvironmentVariableW(name, value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { SetEnvironmentVariableW(_name, _wasThere ? _before.Text() : nullptr); }

private:
    const wchar_t* _name;
    bool _wasThere;
    qx::String _before;
};

} // namespace qxtest
