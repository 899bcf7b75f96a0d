// The names of the export lists: every *.txt file of a directory, one name
// a line, # starting a comment.
#ifndef KE_TEST_EXPORT_LISTS_H
#define KE_TEST_EXPORT_LISTS_H

#include <dirent.h>

#include <fstream>
#include <set>
#include <string>

namespace ketest {

inline std::set<std::string> export_list_names(const std::string &dir_path)
{
    std::set<std::string> names;
    DIR *dir = opendir(dir_path.c_str());
    if (dir == nullptr)
        return names;
    while (const dirent *entry = readdir(dir)) {
        std::string file = entry->d_name;
        if (file.size() < 4 || file.compare(file.size() - 4, 4, ".txt") != 0)
            continue;
        std::ifstream in(dir_path + "/" + file);
        std::string line;
        while (std::getline(in, line)) {
            line = line.substr(0, line.find('#'));
            std::string name;
            for (char ch : line)
                if (ch != ' ' && ch != '\t' && ch != '\r')
                    name += ch;
            if (!name.empty())
                names.insert(name);
        }
    }
    closedir(dir);
    return names;
}

}  // namespace ketest

#endif
