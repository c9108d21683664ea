#pragma once

namespace vmk::zip
{

// Results of compress, extract and list. They are shown to the user in the
// stages' and the backup's messages, so keep the numbers stable.
enum ZipResult : int {
    ZipOk = 0,
    ZipNothingToDo = 1, // no file matched the lists (or the list is empty)
    ZipAborted = 2, // the abort flag was set during the operation
    ZipArchiveUnreadable = 3, // the archive is missing, damaged or not a zip file
    ZipTempFileFailed = 4, // the temporary archive on the host could not be made
    ZipDestinationFailed = 5, // the archive could not be written to its destination
    ZipCompressionFailed = 6, // the library failed while building the archive
    ZipFilesSkipped = 7, // extraction left out at least one file (see the skipping event)
    ZipNoArchiveName = 8, // no archive name was given
    ZipDestinationFull = 11, // the archive's destination ran out of room
    ZipNoSpace = 9, // extraction: the entries need more than the target's free space (see spaceShortage)
    ZipOverlappingEntries = 10, // extraction: entries share their data, as a zip bomb's do
};

// Reason codes of the skipping event.
enum ZipSkipReason : int {
    SkipAccessDenied = 113, // the file cannot be opened for reading
    SkipNotFound = 114, // a named file or folder does not exist
    SkipUnsafeName = 120, // a stored name with ".." or one that would leave the chosen folder
    SkipDamagedEntry = 121, // the entry's data fails its check
    SkipBelowMinimumSize = 122, // smaller than the minimum size to process
    SkipDuplicateName = 123, // a second file under a stored name already taken
    SkipDestinationFailed = 124, // the extracted file could not be written
    SkipLinkInTarget = 125, // the target folder holds a link on the entry's path; it is never followed
    SkipDanglingLink = 126, // a link whose target does not exist
    SkipFifo = 127, // a named pipe: never read
    SkipSocket = 128, // a socket: never read
    SkipDevice = 129, // a character or block device: never read
    SkipDriveMissing = 130, // the entry goes back to a drive that is not present
};

// Compression method numbers as the settings give them.
enum ZipMethod : int {
    MethodDeflate = 8,
    MethodBzip2 = 12,
    MethodBwt = 18, // the Burrows-Wheeler family: bzip2 is its member here
};

} // namespace vmk::zip
