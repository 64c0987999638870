// Control codes of file systems: the targets of links.
#pragma once

#define FSCTL_SET_REPARSE_POINT 0x000900A4
#define FSCTL_GET_REPARSE_POINT 0x000900A8
