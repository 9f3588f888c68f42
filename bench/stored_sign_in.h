#pragma once

namespace Bench {

// The child process that prepares a data directory for an application benchmark:
// it signs in through the program's own client, as the sign-in screen does, so
// that the program started on the directory afterwards resumes the stored sign-in
// without anyone typing, and writes the settings the run asks for.
//   <bench> --sign-in DATA_DIR API_URL OBJECT_CODE [--minimize-to-tray]
class StoredSignIn
{
public:
    StoredSignIn() = delete;

    static bool Requested(int argc, char** argv);
    // The child's main(); 0 when the sign-in is stored.
    static int Run(int argc, char** argv);
};

} // namespace Bench
