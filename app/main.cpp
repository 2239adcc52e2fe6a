#include "CommandLine.h"

int main(int argc, char** argv) { return lusym::RunCommandLine(argc, argv); }
