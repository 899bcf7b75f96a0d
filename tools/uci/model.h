// The configuration held by one file: a package of sections, each with
// options (one value) and lists (several values).
#ifndef UCI_MODEL_H
#define UCI_MODEL_H

#include <string>
#include <vector>

namespace uci {

struct Option {
    std::string name;
    bool is_list = false;
    std::vector<std::string> values;  // exactly one for a plain option
};

struct Section {
    std::string type;
    std::string name;        // generated for an anonymous section
    bool anonymous = false;
    std::vector<Option> options;

    Option *find(const std::string &option);
    const Option *find(const std::string &option) const;
    void set(const std::string &option, const std::string &value);
    void add_list(const std::string &option, const std::string &value);
};

struct Package {
    std::string name;
    std::vector<Section> sections;

    Section *find(const std::string &section);
    // A section by name, or by "@type[N]" (N counted from the end when
    // negative); nullptr when there is none.
    Section *resolve(const std::string &ref);
    // Appends a section.  An anonymous one given no name gets a fresh
    // "cfgXXXXXX" that depends only on its position and type, so a file
    // read again names its sections as they were named when added.
    Section &append(const std::string &type, const std::string &name, bool anonymous);
    // "@type[N]" for an anonymous section, its name otherwise.
    std::string display_name(const Section &s) const;
};

// Names of packages, sections and options are plain words; section types
// may also carry '-'.  Nothing else may reach a file or a path.
bool valid_name(const std::string &s);
bool valid_type(const std::string &s);
bool valid_package(const std::string &s);

}  // namespace uci

#endif
