#include "tests/mibs/helpers/LoadedMibFolder.h"

#include <algorithm>
#include <utility>

#include <syslog.h>

namespace {

/// A callback in Net-SNMP's form (SNMP_CALLBACK_LOGGING): appends to the std::vector<std::string>
/// behind `target` what is logged as a notice or worse.
int Record(int /*major*/, int /*minor*/, void* message, void* target)
{
    const auto& logged = *static_cast<const snmp_log_message*>(message);
    if (logged.priority <= LOG_NOTICE) {
        static_cast<std::vector<std::string>*>(target)->emplace_back(logged.msg);
    }
    return SNMP_ERR_NOERROR;
}

} // namespace

LoadedMibFolder& LoadedMibFolder::Get()
{
    static LoadedMibFolder folder;
    return folder;
}

LoadedMibFolder::LoadedMibFolder() : m_mibs("MIBS", "Printer-MIB")
{
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, Record, &m_logged);
    // One gets the notices and worse: releases of Net-SNMP differ in what they take pri_max for,
    // see snmp/Messages.cpp.
    for (const int most : {LOG_EMERG, LOG_DEBUG}) {
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_CALLBACK, LOG_DEBUG)->pri_max = most;
    }

    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SAVE_MIB_DESCRS, 1);
    // Also about what Net-SNMP ignores by default, such as a second definition of a name.
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_MIB_WARNINGS, 1);

    m_complaints = ComplaintsDuring([] {
        netsnmp_set_mib_directory(SNMPDISCOVERY_MIBS_DIR);
        init_snmp("mibs_tests");
    });

    Collect(get_tree_head());
    for (int id = 0; const module* known = find_module(id); ++id) {
        m_found.emplace(known->name, known->file);
        if (known->no_imports != -1) { // -1: it was not needed
            m_read.emplace(known->name);
        }
    }
    for (int index = 0; const char* name = get_tc_descriptor(index); ++index) {
        m_conventions.emplace_back(name);
    }
}

LoadedMibFolder::~LoadedMibFolder()
{
    // Before the shutdown, which hands what it still finds registered to free().
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, Record, &m_logged, 1);
    snmp_shutdown("mibs_tests");
}

void LoadedMibFolder::Collect(const tree* node)
{
    for (; node != nullptr; node = node->next_peer) {
        m_nodes.push_back(node);
        Collect(node->child_list);
    }
}

const tree* LoadedMibFolder::Find(const std::string& label) const
{
    const auto found = std::find_if(m_nodes.begin(), m_nodes.end(),
                                    [&](const tree* node) { return label == node->label; });
    return found == m_nodes.end() ? nullptr : *found;
}

std::vector<std::string> LoadedMibFolder::ComplaintsDuring(const std::function<void()>& action)
{
    m_logged.clear();
    action();
    return std::exchange(m_logged, {});
}

std::string LoadedMibFolder::ModuleOf(const tree& node)
{
    const module* owner = node.modid < 0 ? nullptr : find_module(node.modid);
    return owner == nullptr ? "" : owner->name;
}
