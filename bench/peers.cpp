#include "bench/peers.h"

#include <SimpleIni.h>
#include <glib.h>
#include <ini.h>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <map>
#include <utility>

#include "corpxiTools/iniStore.h"

namespace bench {

namespace {

template <class Store>
std::unique_ptr<iStore> loadStore(const char* path) {
  auto store = std::make_unique<Store>();
  if (!store->load(path)) return nullptr;
  return store;
}

class tVarmexStore : public iStore {
 public:
  // As a session does it, which has asked whether the file is there.
  bool load(const char* path) {
    varmex::tIniText text;
    return text.read(path, varmex::tLooked::yes) >= 0 && store_.load(std::move(text)) >= 0;
  }

  std::string find(const std::string& section, const std::string& item) const override {
    const varmex::tIniItem* const found = store_.findItem(section, item);
    return found ? found->value : "";
  }

 private:
  varmex::tIniStore store_;
};

class tSimpleIniStore : public iStore {
 public:
  bool load(const char* path) { return store_.LoadFile(path) >= 0; }

  std::string find(const std::string& section, const std::string& item) const override {
    return store_.GetValue(section.c_str(), item.c_str(), "");
  }

 private:
  CSimpleIniCaseA store_;
};

class tInihStore : public iStore {
 public:
  // A positive result names a line that it could not read whole, and the rest is there.
  bool load(const char* path) { return ini_parse(path, &tInihStore::take, this) >= 0; }

  std::string find(const std::string& section, const std::string& item) const override {
    const auto items = sections_.find(section);
    if (items == sections_.end()) return {};
    const auto value = items->second.find(item);
    return value == items->second.end() ? std::string() : value->second;
  }

 private:
  static int take(void* self, const char* section, const char* name, const char* value) {
    static_cast<tInihStore*>(self)->sections_[section][name] = value;
    return 1;
  }

  std::map<std::string, std::map<std::string, std::string>> sections_;
};

class tGlibStore : public iStore {
 public:
  tGlibStore() : file_(g_key_file_new()) {}
  ~tGlibStore() override { g_key_file_free(file_); }
  tGlibStore(const tGlibStore&) = delete;
  tGlibStore& operator=(const tGlibStore&) = delete;

  bool load(const char* path) {
    return g_key_file_load_from_file(file_, path, G_KEY_FILE_NONE, nullptr) != 0;
  }

  std::string find(const std::string& section, const std::string& item) const override {
    char* const value = g_key_file_get_value(file_, section.c_str(), item.c_str(), nullptr);
    std::string text = value ? value : "";
    g_free(value);
    return text;
  }

 private:
  GKeyFile* file_;
};

class tBoostStore : public iStore {
 public:
  bool load(const char* path) {
    try {
      boost::property_tree::ini_parser::read_ini(path, tree_);
      return true;
    } catch (const boost::property_tree::ini_parser_error&) {
      return false;
    }
  }

  std::string find(const std::string& section, const std::string& item) const override {
    return tree_.get_child(section).get<std::string>(item, "");
  }

 private:
  boost::property_tree::ptree tree_;
};

}  // namespace

const std::vector<tReader>& readers() {
  static const std::vector<tReader> all{{"varmex", &loadStore<tVarmexStore>},
                                        {"SimpleIni", &loadStore<tSimpleIniStore>},
                                        {"inih", &loadStore<tInihStore>},
                                        {"GLib", &loadStore<tGlibStore>},
                                        {"Boost", &loadStore<tBoostStore>}};
  return all;
}

}  // namespace bench
