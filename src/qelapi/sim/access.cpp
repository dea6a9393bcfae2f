#include "access.h"

#include "ipaddr.h"

#include <algorithm>
#include <set>

namespace qelsim
{

namespace
{

// Port settings and port methods: granted to edit and super.
const std::set<std::string>& editKeys()
{
    static const std::set<std::string> k = {
        "qel_fcport.modifyinstance", "qel_fcalport.modifyinstance",
        "qel_fcport.setoffline",     "qel_fcport.reset",
        "qel_fcport.reloadfirmware", "qel_fcport.syncdatabase",
        "qel_fcport.initializeloop", "qel_fcportlesbstatistics.resetselectedstats",
    };
    return k;
}

// Storage configuration and replication: granted to super only.
const std::set<std::string>& superKeys()
{
    static const std::set<std::string> k = {
        "qel_storageconfigurationservice.createormodifyelementfromstoragepool.createvolume",
        "qel_storageconfigurationservice.createormodifyelementfromstoragepool.growvolume",
        "qel_storageconfigurationservice.createormodifyelementfromstoragepool.setvolume",
        "qel_storageconfigurationservice.modifysynchronization.detach",
        "qel_storageconfigurationservice.modifysynchronization.resync",
        "qel_storageconfigurationservice.modifysynchronization.restore",
        "qel_storageconfigurationservice.modifysynchronization.startcopy",
        "qel_storageconfigurationservice.modifysynchronization.stopcopy",
        "qel_storageconfigurationservice.createormodifystoragepool.setcpg",
        "qel_storageconfigurationservice.createormodifystoragepool.createcpg",
        "qel_storageconfigurationservice.deletestoragepool.deletedynamicstoragepool",
        "qel_storageconfigurationservice.deletestoragepool.deletedeltareplicastoragepool",
        "qel_storageconfigurationservice.returntostoragepool",
        "qel_storageconfigurationservice.returntostoragepool.basevv",
        "qel_storageconfigurationservice.returntostoragepool.physcopyvv",
        "qel_storageconfigurationservice.returntostoragepool.virtcopyvv",
        "qel_replicationservice.createelementreplica.createsv",
        "qel_replicationservice.createelementreplica.createvvcopy",
        "qel_replicationservice.creategroupreplica.creategroupsv",
        "qel_replicationservice.creategroupreplica.creategroupvvcopy",
        "qel_replicationservice.creategroupreplica.createmirror",
        // The trailing blank is part of the key the providers send; kept as it is.
        "qel_replicationservice.modifyreplicasynchronization.abort ",
        "qel_replicationservice.modifyreplicasynchronization.syncrcopy",
        "qel_replicationservice.modifyreplicasynchronization.dissolve",
        "qel_replicationservice.modifyreplicasynchronization.setrcopygroup",
        "qel_replicationservice.modifyreplicasynchronization.resync",
        "qel_replicationservice.modifyreplicasynchronization.restore",
        "qel_replicationservice.modifyreplicasynchronization.split",
        "qel_replicationservice.modifylistsynchronization.abort",
        "qel_replicationservice.modifylistsynchronization.dissolve",
        "qel_replicationservice.modifylistsynchronization.resync",
        "qel_replicationservice.modifylistsynchronization.restore",
        "qel_replicationservice.deletegroup",
        "qel_replicationservicecapabilities",
        "qel_storagesetting.modifyinstance",
        "qel_allocatedfromstoragepool.modifyinstance.setcpg",
        "qel_allocatedfromstoragepool.modifyinstance.setvv",
    };
    return k;
}

bool addressAllowed(const User& u, const std::string& addr)
{
    if (u.addresses.empty())
        return true;
    auto ip = canonicalIp(addr);
    if (!ip)
        return false;
    return std::find(u.addresses.begin(), u.addresses.end(), ip->text) != u.addresses.end();
}

}  // namespace

bool knownKey(const std::string& key)
{
    return editKeys().count(key) || superKeys().count(key);
}

int openSession(const Model& m, const std::string& user)
{
    const User* u = m.user(user);
    if (!u)
        return API_ERR_NOENT;
    return u->enabled ? API_OK : API_ERR_PERM;
}

int authorize(
    const Model& m, const std::string& user, const std::string& addr, const std::string& key)
{
    if (!knownKey(key))
        return API_AUTH_UNKNOWN_KEY;
    const User* u = m.user(user);
    if (!u || !u->enabled || !addressAllowed(*u, addr))
        return API_AUTH_NOT_ALLOWED;
    switch (u->role)
    {
        case Role::Super:
            return API_AUTH_GRANTED;
        case Role::Edit:
            return editKeys().count(key) ? API_AUTH_GRANTED : API_AUTH_DENIED;
        case Role::Browse:
            return API_AUTH_DENIED;
    }
    return API_AUTH_DENIED;
}

}  // namespace qelsim
