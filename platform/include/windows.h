// The system's interface as one header, in the grouping of the published documentation.
#pragma once

#include <wchar.h>

#include <minwindef.h>
#include <guiddef.h>
#include <winnt.h>
#include <winerror.h>
#include <errhandlingapi.h>
#include <handleapi.h>
#include <fileapi.h>
#include <synchapi.h>
#include <processenv.h>
#include <processthreadsapi.h>
#include <sysinfoapi.h>
#include <timeapi.h>
#include <libloaderapi.h>
#include <winbase.h>
#include <winnls.h>
#include <stringapiset.h>
#include <winreg.h>
#include <winuser.h>
#include <winver.h>
