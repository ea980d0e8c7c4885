local Account = {}
Account.__index = Account

function Account.new() return setmetatable({}, Account) end
function Account:open(start) self.balance = start; self.moves = 0; return self end
function Account:deposit(amount)
    self.balance = self.balance + amount
    self.moves = self.moves + 1
    return self
end
function Account:worth() return self.balance end

function main()
    local i, sum, account = 0, 0, Account.new():open(0)
    while i < 300000 do
        account:deposit(2):deposit(-1)
        if account:worth() > 1000 then account:open(0); sum = sum + 1 end
        i = i + 1
    end
    return sum + account:worth() + account.moves
end
