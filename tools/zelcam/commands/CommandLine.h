// All commands behind one command line.
#ifndef ZELCAM_COMMANDLINE_H
#define ZELCAM_COMMANDLINE_H

namespace zelcam {

// Carries out the command that the arguments name and tells its failure: a line on the error stream, and with --json
// an object on the standard output. Result: the exit code.
int RunCommandLine(int argc, char** argv);

}  // namespace zelcam

#endif
