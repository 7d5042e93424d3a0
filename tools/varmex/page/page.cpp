#include "tools/varmex/page/page.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/words.h"
#include "tools/varmex/page/about.h"
#include "tools/varmex/picture/picture.h"
#include "tools/varmex/picture/svg.h"
#include "tools/varmex/saved/bytes.h"
#include "tools/varmex/text/embedded.h"
#include "tools/varmex/text/moment.h"

namespace tool {

namespace {

// "sha256-...": what a policy names a text by.
std::string policyHashOf(const tEmbedded& embedded) {
  std::string bytes;
  for (std::size_t n = 0; n < embedded.sha256.size(); n += 2) {
    bytes += static_cast<char>(std::stoi(std::string(embedded.sha256.substr(n, 2)), nullptr, 16));
  }
  return "'sha256-" + toBase64(bytes) + '\'';
}

// JSON in a script element: it is data, and nothing in it ends the element.
std::string dataElement(const char* attributes, const std::string& json) {
  std::string element = std::string("<script type=\"application/json\"") + attributes + '>';
  for (const char each : json) {
    if (each == '<') {
      element += "\\u003c";
    } else {
      element += each;
    }
  }
  return element + "</script>\n";
}

std::string compact(const tJson& json) {
  return json.dump(-1, ' ', false, tJson::error_handler_t::replace);
}

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

class tPageWriter {
 public:
  tPageWriter(const tReport& report, tPciNotation notation) : report_(report), notation_(notation) {
    for (const tFinding& finding : report.findings) {
      places_.push_back(placeOf(finding, report.lineMaps));
    }
  }

  std::string write() {
    writeHead();
    writeHeader();
    html_ += "<main>\n";
    for (const tJson& chassis : report_.description["Chassis"]) writeChassis(chassis);
    writeOtherFindings();
    writeModules();
    html_ += "</main>\n";
    writeEnd();
    return std::move(html_);
  }

 private:
  std::string title() const { return "PXI installation of " + xmlText(report_.saved.host); }

  void writeHead() {
    html_ =
        "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src " +
        policyHashOf(kPageScript) + "; style-src " + policyHashOf(kPictureStyle) + ' ' +
        policyHashOf(kPageStyle) + "; base-uri 'none'; form-action 'none'\">\n" +
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
        title() + "</title>\n";
    html_ += "<style>" + std::string(kPictureStyle.text) + "</style>\n<style>" +
             std::string(kPageStyle.text) + "</style>\n</head>\n<body>\n" +
             "<svg class=\"shared\" width=\"0\" height=\"0\" aria-hidden=\"true\">" +
             kPicturePattern + "</svg>\n";
  }

  void writeHeader() {
    const tSavedInstallation& saved = report_.saved;
    const std::size_t chassis = report_.description["Chassis"].size();
    const std::size_t modules = report_.modules["modules"].size();
    html_ += "<header>\n<h1>" + title() + "</h1>\n<p>" + xmlText(momentForPeople(saved.taken)) +
             ", varmex " + xmlText(saved.version) + ", " + xmlText(saved.platform) + ": " +
             std::to_string(chassis) + " chassis, <a href=\"#modules\">" +
             counted(modules, "module") + "</a>, <a href=\"#findings\">" +
             counted(report_.findings.size(), "finding") + "</a></p>\n";
    writeFiles();
    html_ +=
        "<div class=\"tools\" role=\"search\">\n<label for=\"search\">Search</label>\n"
        "<input id=\"search\" type=\"search\" role=\"combobox\" aria-expanded=\"false\" "
        "aria-controls=\"hits\" aria-autocomplete=\"list\" autocomplete=\"off\" "
        "placeholder=\"Alias, model, serial number, address\">\n"
        "<ul id=\"hits\" role=\"listbox\" aria-label=\"What fits\" hidden></ul>\n</div>\n"
        "<noscript><p>Without its script this page shows the pictures and the findings "
        "alone.</p></noscript>\n</header>\n";
  }

  void writeFiles() {
    html_ += "<p>Files: " + xmlText(joined(report_.files, ", ")) +
             " <button type=\"button\" id=\"take\">Save the installation as a file</button></p>\n";
    std::stringstream faults;
    showFaults(report_.description, faults);
    for (std::string line; std::getline(faults, line);) {
      if (!line.empty()) html_ += "<p class=\"fault\">" + xmlText(line) + "</p>\n";
    }
  }

  void writeChassis(const tJson& chassis) {
    const std::string number = xmlText(textOf(chassis, "ChassisNumber"));
    html_ += "<section class=\"rack\" id=\"" + number + "\" data-chassis=\"" + number +
             "\" aria-labelledby=\"title-" + number + "\">\n<h2 id=\"title-" + number + "\">" +
             xmlText(chassisTitle(chassis)) + "</h2>\n<div class=\"view\">\n" +
             pictureElement(chassis, notation_) + "</div>\n";
    const auto wanted = numberOf(chassis, "ChassisNumber");
    writeFindings([&](const tAboutPlace& place) { return place.chassis == wanted; });
    html_ += dataElement("", compact(aboutChassis(chassis, notation_))) + "</section>\n";
  }

  void writeOtherFindings() {
    html_ += "<section class=\"rest\" id=\"findings\">\n<h2>Findings</h2>\n<p>" + comparison() +
             "</p>\n";
    if (report_.findings.empty()) {
      html_ += "<p>No findings.</p>\n";
    } else {
      html_ += "<p>" + counted(report_.findings.size(), "finding") +
               "; those about one chassis stand below its picture.</p>\n";
    }
    const tJson& chassis = report_.description["Chassis"];
    writeFindings([&](const tAboutPlace& place) {
      return std::none_of(chassis.begin(), chassis.end(), [&](const tJson& one) {
        return place.chassis && numberOf(one, "ChassisNumber") == place.chassis;
      });
    });
    html_ += "</section>\n";
  }

  // Whether there can be findings about the machine itself.
  std::string comparison() const {
    const std::optional<tPciTree>& tree = report_.saved.pci;
    if (!tree) return "Not compared with the machine: no PCI tree of it is known.";
    if (!report_.description.contains("machine")) {
      return "Not compared with the machine: the description can't be opened.";
    }
    return "Compared with the machine's PCI tree, " + counted(tree->devices().size(), "device") +
           ", as by varmex check --live.";
  }

  template <class Fits>
  void writeFindings(Fits fits) {
    std::string list;
    for (std::size_t n = 0; n < places_.size(); ++n) {
      if (fits(places_[n])) list += findingItem(report_.findings[n], places_[n]);
    }
    if (!list.empty()) html_ += "<ul class=\"findings\">\n" + list + "</ul>\n";
  }

  static std::string findingItem(const tFinding& finding, const tAboutPlace& place) {
    const tPosition& position = finding.position;
    std::string item = "<li class=\"" + std::string(severityName(finding.severity)) + '"';
    if (!place.keys.empty()) item += " data-about=\"" + joined(place.keys, " ") + '"';
    item += "><b>" + std::string(severityName(finding.severity)) + "</b> ";
    if (place.slot) {
      const std::string slot = std::to_string(*place.chassis) + '/' + std::to_string(*place.slot);
      item += "<a href=\"#" + slot + "\">" + slot + "</a> ";
    }
    item += xmlText(finding.message) + " <span>" + xmlText(finding.answer) + "</span>";
    item += " <code>" + xmlText(finding.id) + ", " + xmlText(textOf(position)) + "</code>";
    if (!finding.source.empty()) item += "<pre>" + xmlText(finding.source) + "</pre>";
    return item + "</li>\n";
  }

  void writeModules() {
    html_ +=
        "<section class=\"rest\" id=\"modules\">\n<h2>Modules</h2>\n<p><button type=\"button\" "
        "id=\"copy\">Copy as text</button></p>\n<div class=\"view\"><table></table></div>\n";
    html_ += dataElement(" id=\"module-rows\"", compact(aboutModules(report_.modules, notation_))) +
             "</section>\n";
  }

  void writeEnd() {
    html_ +=
        "<aside id=\"details\" aria-label=\"Details\"><p>Point at a slot, a bus, a bridge or a "
        "star line; a click or Enter keeps what is told of it here. Choose two slots for the "
        "trigger lines between them. Escape ends it.</p></aside>\n<div id=\"said\" "
        "role=\"status\"></div>\n";
    html_ += dataElement(kSavedAttributes, textOf(report_.saved));
    html_ += "<script>" + std::string(kPageScript.text) + "</script>\n</body>\n</html>\n";
  }

  const tReport& report_;
  tPciNotation notation_;
  std::vector<tAboutPlace> places_;  // of the findings
  std::string html_;
};

}  // namespace

std::string pageOf(const tReport& report, tPciNotation notation) {
  return tPageWriter(report, notation).write();
}

}  // namespace tool
