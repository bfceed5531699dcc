# Completion of kestravctl(1) for fish.

# Folders, and the files that end so.
function __kestravctl_files
    set -l typed (commandline -ct)
    for path in $typed*/ $typed*.$argv[1]
        echo $path
    end
end

set -l commands detect list drives firmware icon push pull save read write helper doctor
set -l operations install uninstall status run
# What the accessories that are attached have in a column of `kestravctl list`.
function __kestravctl_attached
    kestravctl list 2>/dev/null | awk -v column=$argv[1] 'NR > 1 && $column != "-" { print $column }'
end

set -l none "not __fish_seen_subcommand_from $commands"
set -l helper "__fish_seen_subcommand_from helper; and not __fish_seen_subcommand_from $operations"

complete -c kestravctl -f
complete -c kestravctl -s h -l help -d 'Print a help message'
complete -c kestravctl -n $none -l version -d 'Print the version'
complete -c kestravctl -n $none -a detect -d 'Find the accessory and print its name, disk and id'
complete -c kestravctl -n $none -a list -d 'List all accessories'
complete -c kestravctl -n $none -a drives -d 'List the mounted drives'
complete -c kestravctl -n $none -a firmware -d 'Send a firmware image to the firmware area'
complete -c kestravctl -n $none -a icon -d 'Send an icon image to the icon area'
complete -c kestravctl -n $none -a push -d 'Send a file to any place of the disk'
complete -c kestravctl -n $none -a pull -d 'Have the command service read blocks'
complete -c kestravctl -n $none -a save -d 'Keep what stands in an area, to send it back later'
complete -c kestravctl -n $none -a read -d 'Read bytes straight from the disk'
complete -c kestravctl -n $none -a write -d "Write a file's bytes straight to the disk"
complete -c kestravctl -n $none -a doctor -d 'Say whether an update can work'
complete -c kestravctl -n $none -a helper -d 'The privileged helper on the system bus'

complete -c kestravctl -n '__fish_seen_subcommand_from detect list drives doctor' -l json -d 'Print JSON instead'
set -l send '__fish_seen_subcommand_from firmware icon push'
complete -c kestravctl -n $send -l verify -d 'Look at the disk a second time'
complete -c kestravctl -n $send -l json -d 'Print one JSON object about the end'
complete -c kestravctl -n $send -l progress -d 'With --json, print an object a line while it goes on'
complete -c kestravctl -n $send -l dry-run -d 'Do everything but the writing'
complete -c kestravctl -n $send -l sha256 -x -d 'Send the image only if it has this checksum'
complete -c kestravctl -n $send -l check -d 'The same with the checksum in the file beside it'
complete -c kestravctl -n $send -l no-prompt -d 'Fail rather than ask for a password'
complete -c kestravctl -n $send -l quiet -d 'Say nothing unless something goes wrong'
complete -c kestravctl -n '__fish_seen_subcommand_from firmware; and not __fish_seen_subcommand_from save' -a '(__kestravctl_files fds)'
complete -c kestravctl -n '__fish_seen_subcommand_from icon; and not __fish_seen_subcommand_from save' -a '(__kestravctl_files fif)'
complete -c kestravctl -n '__fish_seen_subcommand_from push write' -F
complete -c kestravctl -n '__fish_seen_subcommand_from save' -a 'firmware icon' -F
complete -c kestravctl -n '__fish_seen_subcommand_from save' -l bytes -x -d 'How many bytes'
complete -c kestravctl -n '__fish_seen_subcommand_from pull read' -s o -l output -r -F -d 'Write to this file'

complete -c kestravctl -n $send -l all -d 'Send it to all accessories'
complete -c kestravctl -n $send -l jobs -x -d 'How many at a time'
complete -c kestravctl -n $send -l wait -d 'Wait for an accessory'
complete -c kestravctl -n $send -l backup -x -a '(__fish_complete_directories)' -d 'Keep what stands there in this folder'

set -l one '__fish_seen_subcommand_from detect firmware icon push pull save read write'
complete -c kestravctl -n $one -l port -x -a '(__kestravctl_attached 3)' -d 'The accessory that is plugged in there'
complete -c kestravctl -n $one -l serial -x -a '(__kestravctl_attached 2)' -d 'The accessory with this serial number'
complete -c kestravctl -n $one -l disk -x -a '(__kestravctl_attached 1)' -d 'The accessory with this disk'

complete -c kestravctl -n $helper -a install -d "Install it, after an administrator's consent"
complete -c kestravctl -n $helper -a uninstall -d "Take it away, after an administrator's consent"
complete -c kestravctl -n $helper -a status -d 'Say whether it is installed and running'
complete -c kestravctl -n $helper -a run -d "Have it unmount, read or write the accessory's disk"
complete -c kestravctl -n '__fish_seen_subcommand_from helper; and __fish_seen_subcommand_from run' -a 'umount dd'
