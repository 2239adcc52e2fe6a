#include "CommandLine.h"

#if defined(_WIN32)

#  include <du/Utf8.h>

#  include <string>
#  include <vector>

/// Arguments as the system has them, since those that main is given are not in UTF-8.
int wmain(int argc, wchar_t** argv)
{
    std::vector<std::string> texts;
    for (int i = 0; i < argc; ++i) {
        texts.push_back(du::WideStrToUtf8(argv[i]));
    }
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    return lusym::RunCommandLine(argc, arguments.data());
}

#else

int main(int argc, char** argv) { return lusym::RunCommandLine(argc, argv); }

#endif
