#include "services/image/UserRights.h"

#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace kestrav {
namespace {

UserRights ownUser() {
    std::vector<gid_t> groups;
    if (const int count = ::getgroups(0, nullptr); count > 0) {
        groups.resize(static_cast<std::size_t>(count));
        if (::getgroups(count, groups.data()) != count) groups.clear();
    }
    return {::geteuid(), ::getegid(), std::move(groups)};
}

std::vector<gid_t> groupsOf(const char* name, gid_t primary) {
    std::vector<gid_t> groups(64);
    int count = static_cast<int>(groups.size());
    if (::getgrouplist(name, primary, groups.data(), &count) < 0) {
        groups.resize(static_cast<std::size_t>(count));
        if (::getgrouplist(name, primary, groups.data(), &count) < 0) return {primary};
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

}  // namespace

Outcome<UserRights> rightsOf(uid_t uid) {
    if (uid == ::geteuid()) return ownUser();
    std::vector<char> texts(1024);
    passwd record{};
    passwd* found = nullptr;
    int error = ::getpwuid_r(uid, &record, texts.data(), texts.size(), &found);
    while (error == ERANGE && texts.size() < (std::size_t{1} << 20U)) {
        texts.resize(texts.size() * 2);
        error = ::getpwuid_r(uid, &record, texts.data(), texts.size(), &found);
    }
    if (found == nullptr)
        return refused("the system does not know a user with the number " + std::to_string(uid) + ".");
    return UserRights{uid, record.pw_gid, groupsOf(record.pw_name, record.pw_gid)};
}

}  // namespace kestrav
