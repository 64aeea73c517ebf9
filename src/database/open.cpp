// Connection::Open: from a connection string to the provider it means.
#include "database/connection.h"
#include "database/connection_string.h"
#include "database/provider.h"

namespace vellum250::database {

std::unique_ptr<Connection> Connection::Open(TextView connectionString) {
  const ProviderChoice choice =
      ChooseProvider(ConnectionString::Parse(connectionString), odbc::InstalledDrivers);
  return choice.kind == ProviderChoice::Kind::Embedded ? embedded::Open(choice.connectionString)
                                                       : odbc::Open(choice.connectionString);
}

}  // namespace vellum250::database
