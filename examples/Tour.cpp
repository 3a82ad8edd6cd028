// Tour.cpp - the README's short tour, compiled and run as a test so that it stays true.
#include <fileio/FileIO.h>

#include <cstdio>

int main() {
    // Strings own their bytes, compare case-insensitively, and format numbers exactly and
    // independently of the process's locale.
    String name("Bone");
    name += String(12);                 // "Bone12"
    String f(0.1f);                     // "0.100000001": every float round-trips
    bool same = String("abc") == "ABC"; // true

    // Times are 64-bit tick counts, 135000 ticks a second; frames and cells take the rate.
    Time t(48.0, 24.0); // frame 48 at 24 fps: 2 seconds, 270000 ticks
    String smpte = t.ToString(24, SMPTE, false);
    Time back = String("1:12").ToTime(24, SMPTE, false);

    // Frame ranges as users type them.
    CustomRange range;
    range.Set("1-10, 15, 20-40 s2", 24, FRAMES);
    int frames = range.GetTotalFrames(24);

    // Paths are stored relative to the document's base path, in universal form.
    SetBasePath("/home/ann/Projects/Robot/robot.prj");
    String stored = String("/home/ann/Projects/Robot/Parts/arm.mdl").GetRelativePath();
    // "Parts/arm.mdl"

    // Settings: the registry on Windows, a hive file under $XDG_CONFIG_HOME on Linux.
    int undo = GetRegistryValue("Options", "Undo Levels", 25);

    // Pools: each object kind has its own pool, measured to the byte.
    void* patch = AllocPatch(256); // 256 zero-filled bytes
    FreePatch(patch);
    unsigned long long bytes = TotalRAM(); // everything obtained from the system

    // Projects on disk: a save replaces the file whole or not at all; a file that moved
    // with its folder is found once the folder's new place is known.
    const String project = String::AddNameToExeDirectory("tour-robot.prj");
    const int model = GetHeaderIDFromText("MODELFILE");
    FileStream out;
    bool saved = false;
    if (out.Open(project, FM_VARN)) {
        out << Header(model) << nl << Label("Name") << String("Robot") << nl << EndHeader(model)
            << nl;
        out.Close();
        saved = !out.IsFailed(); // a failed save leaves the old file as it was
    }
    FileStream::AddPathAlias("C:\\Users\\ann\\Robot\\", String::GetAppPath());
    FileStream in;
    String moved("C:\\Users\\ann\\Robot\\tour-robot.prj");
    const bool found = in.Open(moved, FM_LOADING | FM_VARN) && moved == project;
    in.Close();
    Remove(project);

    const bool ok = name == "Bone12" && same && t.GetTicks() == 270000 && frames > 0 &&
                    stored == "Parts/arm.mdl" && undo == 25 && bytes > 0 &&
                    back == Time(36.0, 24.0) && smpte.IsNotEmpty() && saved && found;
    std::printf("%s %s %s %s\n", name.Get(), f.Get(), smpte.Get(), stored.Get());
    return ok ? 0 : 1;
}
