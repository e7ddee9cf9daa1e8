#pragma once

#include <cstddef>
#include <vector>

#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/Section.h"

namespace Tavrin {

// What the queries gave, described once for people and programs alike.

Section DescribeDetection(const Detection& detection);
Section DescribeIdentity(const Identity& identity);
Section DescribeChassisPower(const QueryResult<ChassisPowerCon>& power);
Section DescribePowerCaps(const QueryResult<ChassisPowerCap>& caps);

// One result a node, node 1 first.
Section DescribeNodeStatus(const std::vector<QueryResult<NodeStatus>>& nodes);
Section DescribeNodePower(const std::vector<QueryResult<ChassisPowerCon>>& nodes);

// Slots up to `slotCount` are described whether or not there is a record of them.
Section DescribePsuFans(const QueryResult<std::vector<PSUFanSpeed>>& fans, std::size_t slotCount);
Section DescribePsuFirmware(const QueryResult<std::vector<PSUFwInfo>>& firmware,
                            std::size_t slotCount);
Section DescribePsuStatus(const QueryResult<std::vector<PSUStatus>>& status);

Section DescribePsuSelection(const QueryResult<PsuSelection>& selection);

}  // namespace Tavrin
