# Reads and writes a value through qorlixclient.dll. Needs a 32-bit PowerShell, because the library
# is a 32-bit one: %SystemRoot%\SysWOW64\WindowsPowerShell\v1.0\powershell.exe -File registry.ps1
# The library lies beside this file.
$ErrorActionPreference = 'Stop'
if ([IntPtr]::Size -ne 4) { throw 'start this in a 32-bit PowerShell' }
$env:PATH = "$PSScriptRoot;$env:PATH"

Add-Type -TypeDefinition @'
using System;
using System.Runtime.InteropServices;

public static class Qorlix {
  [StructLayout(LayoutKind.Sequential)]
  public struct TextValue {
    public IntPtr Text;
    public uint Size;
    public uint Length;
    public override string ToString() { return Marshal.PtrToStringAnsi(Text, (int)Size); }
  }

  const string Dll = "qorlixclient.dll";
  const CallingConvention C = CallingConvention.Cdecl;
  [DllImport(Dll, CallingConvention = C)]
  public static extern IntPtr qorlix_open(IntPtr pipeName);
  [DllImport(Dll, CallingConvention = C)]
  public static extern void qorlix_close(IntPtr client);
  [DllImport(Dll, CallingConvention = C)]
  public static extern uint qorlix_code(IntPtr client);
  [DllImport(Dll, CallingConvention = C)]
  public static extern IntPtr qorlix_text(IntPtr client);
  [DllImport(Dll, CallingConvention = C, CharSet = CharSet.Ansi)]
  public static extern int qorlix_reg_create_key(IntPtr client, string key);
  [DllImport(Dll, CallingConvention = C, CharSet = CharSet.Ansi)]
  public static extern int qorlix_reg_set_value(IntPtr client, string key, string name, string text);
  [DllImport(Dll, CallingConvention = C, CharSet = CharSet.Ansi)]
  public static extern int qorlix_reg_get_value(IntPtr client, string key, string name,
                                                out TextValue data);
}
'@

$client = [Qorlix]::qorlix_open([IntPtr]::Zero)
function Confirm-Status([int]$status) {
  if ($status -eq 0) { return }
  $text = [Runtime.InteropServices.Marshal]::PtrToStringAnsi([Qorlix]::qorlix_text($client))
  throw "$text ($([Qorlix]::qorlix_code($client)))"
}

try {
  $key = 'SOFTWARE\Vesmark\NORVA\Demo'
  Confirm-Status ([Qorlix]::qorlix_reg_create_key($client, $key))
  Confirm-Status ([Qorlix]::qorlix_reg_set_value($client, $key, 'Mode', 'fast'))
  $data = New-Object Qorlix+TextValue
  Confirm-Status ([Qorlix]::qorlix_reg_get_value($client, $key, 'Mode', [ref]$data))
  "Mode is $data"
} finally {
  [Qorlix]::qorlix_close($client)
}
