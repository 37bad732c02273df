#include "io/ZPOptionComplaints.h"

#include "io/ZPText.h"

#include <string>
#include <vector>

void ZPComplainOfOptions(int argc, const char *const argv[], const char *shortOptions,
                         const option *longOptions) {
    std::vector<std::string> printable;
    for (int index = 0; index < argc; ++index)
        printable.push_back(ZPEscapedText(argv[index]));
    std::vector<char *> words;
    for (std::string &word : printable)
        words.push_back(word.data());
    words.push_back(nullptr);
    opterr = 1;
    optind = 0;
    while (getopt_long(argc, words.data(), shortOptions, longOptions, nullptr) != -1) {
    }
    opterr = 0;
    optind = 0;
}
