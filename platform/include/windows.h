// Includes the system's API, grouped as in the published documentation.
#pragma once

#include <wchar.h>

#include <datetimeapi.h>
#include <debugapi.h>
#include <errhandlingapi.h>
#include <fileapi.h>
#include <guiddef.h>
#include <handleapi.h>
#include <heapapi.h>
#include <ioapiset.h>
#include <libloaderapi.h>
#include <memoryapi.h>
#include <minwinbase.h>
#include <minwindef.h>
#include <processenv.h>
#include <processthreadsapi.h>
#include <processtopologyapi.h>
#include <profileapi.h>
#include <securitybaseapi.h>
#include <stringapiset.h>
#include <synchapi.h>
#include <sysinfoapi.h>
#include <timeapi.h>
#include <timezoneapi.h>
#include <winbase.h>
#include <winerror.h>
#include <wingdi.h>
#include <winnls.h>
#include <winnt.h>
#include <winreg.h>
#include <winuser.h>
#include <winver.h>
