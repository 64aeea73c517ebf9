#include "vellum250-idl/library.h"

namespace vellum250::idltool {

std::string WriteManifest(const Library& library, std::string_view architecture) {
  std::string out =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<!-- Written by vellum250-idl from the class tables. -->\n"
      "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n";
  out += "  <assemblyIdentity type=\"win32\" name=\"" + library.name + "\" version=\"" +
         library.version + ".0\" processorArchitecture=\"";
  out += architecture;
  out += "\"/>\n  <file name=\"" + library.name + ".dll\">\n";
  for (const Class& published : library.classes) {
    out += "    <comClass clsid=\"" + published.classId + "\" progid=\"" + published.ProgId() +
           "\"\n              threadingModel=\"Apartment\" tlbid=\"" + library.id + "\"/>\n";
  }
  out += "    <typelib tlbid=\"" + library.id + "\" version=\"" + library.interfaceVersion +
         "\" helpdir=\"\"/>\n  </file>\n</assembly>\n";
  return out;
}

}  // namespace vellum250::idltool
