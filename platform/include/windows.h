// The system's interface as one header, in the grouping of the published documentation.
#pragma once

#include <wchar.h>

#include <errhandlingapi.h>
#include <fileapi.h>
#include <guiddef.h>
#include <handleapi.h>
#include <libloaderapi.h>
#include <minwindef.h>
#include <processenv.h>
#include <processthreadsapi.h>
#include <stringapiset.h>
#include <synchapi.h>
#include <sysinfoapi.h>
#include <timeapi.h>
#include <winbase.h>
#include <wingdi.h>
#include <winerror.h>
#include <winnls.h>
#include <winnt.h>
#include <winreg.h>
#include <winuser.h>
#include <winver.h>
