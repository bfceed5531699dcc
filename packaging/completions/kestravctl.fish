# Completion of kestravctl(1) for fish.

# Folders, and the files that end so.
function __kestravctl_files
    set -l typed (commandline -ct)
    for path in $typed*/ $typed*.$argv[1]
        echo $path
    end
end

set -l commands detect drives firmware icon push pull read write helper
set -l operations install uninstall status run
set -l none "not __fish_seen_subcommand_from $commands"
set -l helper "__fish_seen_subcommand_from helper; and not __fish_seen_subcommand_from $operations"

complete -c kestravctl -f
complete -c kestravctl -s h -l help -d 'Print a help message'
complete -c kestravctl -n $none -l version -d 'Print the version'
complete -c kestravctl -n $none -a detect -d 'Find the accessory and print its name, disk and id'
complete -c kestravctl -n $none -a drives -d 'List the mounted drives'
complete -c kestravctl -n $none -a firmware -d 'Send a firmware image to the firmware area'
complete -c kestravctl -n $none -a icon -d 'Send an icon image to the icon area'
complete -c kestravctl -n $none -a push -d 'Send a file to any place of the disk'
complete -c kestravctl -n $none -a pull -d 'Have the command service read up to 19 blocks'
complete -c kestravctl -n $none -a read -d 'Read bytes straight from the disk'
complete -c kestravctl -n $none -a write -d "Write a file's bytes straight to the disk"
complete -c kestravctl -n $none -a helper -d 'The privileged helper on the system bus'

complete -c kestravctl -n '__fish_seen_subcommand_from detect drives' -l json -d 'Print JSON instead'
set -l send '__fish_seen_subcommand_from firmware icon push'
complete -c kestravctl -n $send -l verify -d 'Look at the disk a second time'
complete -c kestravctl -n $send -l json -d 'Print one JSON object about the end'
complete -c kestravctl -n $send -l progress -d 'With --json, print an object a line while it goes on'
complete -c kestravctl -n $send -l quiet -d 'Say nothing unless something goes wrong'
complete -c kestravctl -n '__fish_seen_subcommand_from firmware' -a '(__kestravctl_files fds)'
complete -c kestravctl -n '__fish_seen_subcommand_from icon' -a '(__kestravctl_files fif)'
complete -c kestravctl -n '__fish_seen_subcommand_from push write' -F
complete -c kestravctl -n '__fish_seen_subcommand_from read' -s o -l output -r -F -d 'Write to this file'

complete -c kestravctl -n $helper -a install -d "Install it, after an administrator's consent"
complete -c kestravctl -n $helper -a uninstall -d "Take it away, after an administrator's consent"
complete -c kestravctl -n $helper -a status -d 'Say whether it is installed and running'
complete -c kestravctl -n $helper -a run -d "Have it unmount, read or write the accessory's disk"
complete -c kestravctl -n '__fish_seen_subcommand_from helper; and __fish_seen_subcommand_from run' -a 'umount dd'
