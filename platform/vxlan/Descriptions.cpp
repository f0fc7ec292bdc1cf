#include "platform/kiln/AttributeDefinitions.h"
#include "platform/vxlan/RemoteVniToSBDVlanMergeSm.h"
#include "platform/vxlan/VxlanConfig.h"

KILN_DESCRIBE(Vxlan::VtiStatus)
KILN_DESCRIBE(Vxlan::VtiStatusDir)
KILN_DESCRIBE(Vxlan::VxlanConfigDir)
KILN_DESCRIBE(Vxlan::EcnConfig)
KILN_DESCRIBE(Vxlan::VxlanHwStatusDir)
KILN_DESCRIBE(Vxlan::RemoteVniToVlanStatus)
KILN_DESCRIBE(Vxlan::RemoteVniToSBDVlanMergeSm)
