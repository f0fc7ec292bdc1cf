#include "tests/asic/TestTables.h"

#include "platform/asic/TableDefinitions.h"

ASIC_DESCRIBE_TABLE(AsicTest::LeafTable)
ASIC_DESCRIBE_TABLE(AsicTest::UserTable)
ASIC_DESCRIBE_TABLE(AsicTest::PairIn)
ASIC_DESCRIBE_TABLE(AsicTest::PairOut)
ASIC_DESCRIBE_TABLE(AsicTest::PairTable)
ASIC_DESCRIBE_TABLE(AsicTest::SlotTable)
ASIC_DESCRIBE_TABLE(AsicTest::MemberTable)
