#pragma once

namespace vmk
{

// What distinguishes one tree of the program from another; everything else (the key
// grammar, the lazy fill, the icons) is shared. One factory per tree names its row.
struct TreeOptions {
    enum class Roots {
        Host, // "|HOST|" with the desktop, the documents and the drives
        HostWithMemory, // the same with "*Memory*" first (the scanner)
        Device, // the program drive's root alone
        Folder, // one folder of the form's choosing (FileTreeModel::AddFolderRoot)
    };
    enum class Test {
        Entries, // FolderHasEntries: anything but "." and ".."
        Subfolders, // FolderHasSubfolders: at least one folder
    };

    Roots roots = Roots::Host;
    bool foldersOnly = false; // files are not listed
    bool junctionFilter = true; // folders whose attribute word is exactly 0x2416 are left out
    Test rootTest = Test::Entries; // expand mark of the roots below "|HOST|" and of the device root
    Test childTest = Test::Entries; // expand mark of listed folders
    bool checkBoxes = false;
    bool marks = false; // Shift and Ctrl multi-selection marks

    // frmDataTree: SmartDataTree (host) and SmartUIFlash (device), with marks.
    static TreeOptions frmDataTreeHost()
    {
        return { Roots::Host, false, true, Test::Entries, Test::Entries, false, true };
    }
    static TreeOptions frmDataTreeDevice()
    {
        return { Roots::Device, false, true, Test::Entries, Test::Entries, false, true };
    }
    // scanTree: host roots and the memory node, or the device alone when the host is not scanned.
    static TreeOptions scanTree(bool scanHost)
    {
        return { scanHost ? Roots::HostWithMemory : Roots::Device, false, true, Test::Entries, Test::Entries, true,
            false };
    }
    static TreeOptions BackTree() { return { Roots::Host, false, true, Test::Entries, Test::Entries, true, false }; }
    static TreeOptions Form3()
    {
        return { Roots::Host, true, false, Test::Subfolders, Test::Subfolders, false, false };
    }
    static TreeOptions Form4() { return { Roots::Host, true, false, Test::Entries, Test::Subfolders, false, false }; }
    static TreeOptions Form5() { return { Roots::Host, false, false, Test::Entries, Test::Entries, false, false }; }
    // BackTree: SmartUI1, the archives of the backups folder.
    static TreeOptions SmartUI1() { return { Roots::Folder, false, true, Test::Entries, Test::Entries, false, false }; }
    static TreeOptions Form6() { return { Roots::Device, true, false, Test::Entries, Test::Subfolders, false, false }; }
};

} // namespace vmk
