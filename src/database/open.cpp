// Connection::Open: from a connection string to the provider it means.
#include "database/connection.h"
#include "database/connection_string.h"
#include "database/provider.h"

namespace vellum250::database {

std::unique_ptr<Connection> Connection::Open(TextView connectionString) {
  // A page opens one connection after the other, all by the same text.
  thread_local Text source;
  thread_local ProviderChoice choice;
  if (source.empty() || !SameText(source, connectionString)) {
    choice = ChooseProvider(ConnectionString::Parse(connectionString), odbc::InstalledDrivers);
    source = connectionString;
  }
  return choice.kind == ProviderChoice::Kind::Embedded ? embedded::Open(choice.connectionString)
                                                       : odbc::Open(choice.connectionString);
}

}  // namespace vellum250::database
