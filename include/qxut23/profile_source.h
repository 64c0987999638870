/* Opens profiles with options, and reports what was found in the file of a profile.
 *
 * These functions complement those of profile.h: a program that changes a file in place can find out before saving
 * whether the file is a profile at all, and whether anything in it would be lost.
 */
#ifndef QXUT23_PROFILE_SOURCE_H
#define QXUT23_PROFILE_SOURCE_H

#include <qxut23/base.h>
#include <qxut23/profile.h>

QXUT_EXTERN_C_BEGIN

/* Flags of QxProfJobOpen. */
#define QXUT_PROFILE_EXCLUSIVE 0x1u /* opens like ProfJobOpenExclusive */
#define QXUT_PROFILE_ANY_SIZE 0x2u  /* no limit except 2 GB of unpacked text */
#define QXUT_PROFILE_EXISTING 0x4u  /* with QXUT_PROFILE_EXCLUSIVE: fails instead of creating a missing file */

/* Opens a job like ProfJobOpen, or like ProfJobOpenExclusive with QXUT_PROFILE_EXCLUSIVE. `mostUnpacked` is the largest
   size in bytes to which a packed file may unpack, counting the text and the memory of its entries; 0 means the usual
   limit, which is 64 times the size of the file and at least 64 MB. The limit is the same for a packed file inside a
   packed file. A file beyond it is not read: the job is empty, its error is PROF_ERR_LOCKED and QxProfGetSource
   reports QXUT_SOURCE_TOO_LARGE.
   Returns null if memory runs out or for unknown flags. */
QXUT_API HPROFJOB QxProfJobOpen(const QXWCHAR* name, uint32_t flags, uint64_t mostUnpacked);

/* Bits of QxProfGetSource. The low four bits are the form, a PROF_FORM_ value: a save with this form and
   PROF_SAVE_PACKED_AS_LOADED keeps the form of the file. */
#define QXUT_SOURCE_FORM 0xFu
#define QXUT_SOURCE_PACKED 0x40u
/* The file isn't a profile in any form. Nothing was read, or, with QXUT_SOURCE_INI, it was read as an INI file: a save
   loses the name of the first section and nests each further section in the one before it. */
#define QXUT_SOURCE_FOREIGN 0x100u
#define QXUT_SOURCE_INI 0x200u
/* The text ends inside a list, as if it had been cut off. */
#define QXUT_SOURCE_TRUNCATED 0x400u
/* A save loses comments. */
#define QXUT_SOURCE_COMMENTS 0x800u
/* A save loses text that isn't part of any entry, or characters that the form can't represent. */
#define QXUT_SOURCE_IGNORED 0x1000u
/* A save turns XFDF fields inside other fields, or several values of one field, into fields of their own. */
#define QXUT_SOURCE_FLATTENED 0x2000u
/* The file unpacks to more than the limit, or has more than 2 GB of text. It was not read. */
#define QXUT_SOURCE_TOO_LARGE 0x4000u
/* The packed data is damaged or cut off. Only the text before the damage was read. Packed data has no checksum, so this
   finds only damage that makes it invalid. */
#define QXUT_SOURCE_DAMAGED 0x8000u
/* Any of these means that a save in place would lose something. Changes of encoding, indentation and empty lines don't
   count as losses, nor do braces added to lists that have none. */
#define QXUT_SOURCE_LOSSY                                                                                              \
    (QXUT_SOURCE_FOREIGN | QXUT_SOURCE_TRUNCATED | QXUT_SOURCE_COMMENTS | QXUT_SOURCE_IGNORED |                        \
        QXUT_SOURCE_FLATTENED | QXUT_SOURCE_TOO_LARGE | QXUT_SOURCE_DAMAGED)

/* Returns what was found when the job was loaded. Later changes of the job have no effect. Returns 0 for an empty or
   new file, a job without a file, and the invalid job. */
QXUT_API uint32_t QxProfGetSource(HPROFJOB job);

QXUT_EXTERN_C_END

#endif
